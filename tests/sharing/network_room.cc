// One end of a pair of virtual interfaces is the computer's, the other end is the phone's.
// SPDX-License-Identifier: Apache-2.0
#include "tests/sharing/network_room.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <thread>

#include "tools/common/process.h"

namespace fs = std::filesystem;

namespace {

constexpr double kSeconds = 20;

const char kBus[] =
    "<busconfig><type>system</type><listen>unix:path=@SOCKET@</listen><auth>EXTERNAL</auth>"
    "<policy context=\"default\"><allow user=\"*\"/><allow own=\"*\"/>"
    "<allow send_type=\"method_call\"/><allow send_destination=\"*\"/>"
    "<allow receive_sender=\"*\"/></policy></busconfig>\n";

const char kResponder[] =
    "[server]\nhost-name=shop\nuse-ipv6=no\nallow-interfaces=lan0\n[publish]\n[rlimits]\n";

bool inNetwork = false;  // of this process

bool did(const std::string& words) { return run({"sh", "-c", words}).status == 0; }

}  // namespace

NetworkRoom::NetworkRoom() {
  missing_ = enter();
  if (!missing_.empty()) return;
  startBus();
  startResponder();
}

std::string NetworkRoom::enter() {
  if (geteuid() != 0) return "a network of its own needs root";
  if (!fs::exists(KORVEL_AVAHI_DAEMON) || !fs::exists(KORVEL_DBUS_DAEMON)) {
    return "avahi-daemon or dbus-daemon is not installed";
  }
  if (inNetwork) return "";
  if (unshare(CLONE_NEWNET | CLONE_NEWNS) != 0) return "namespaces are not allowed here";
  const bool made =
      mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
      mount("none", "/run", "tmpfs", 0, nullptr) == 0 &&
      // Names that are looked up are unknown at once: no name server can be reached.
      mount("/dev/null", "/etc/resolv.conf", nullptr, MS_BIND, nullptr) == 0 &&
      did("ip netns add phone && ip link set lo up && "
          "ip link add lan0 type veth peer name lan1 netns phone && "
          "ip addr add 10.77.0.1/24 dev lan0 && ip link set lan0 up && "
          "ip route add default dev lan0 && "
          "ip -n phone addr add 10.77.0.2/24 dev lan1 && ip -n phone link set lan1 up && "
          "ip -n phone route add default dev lan1");
  if (!made) return "virtual networks are not to be had here";
  inNetwork = true;
  return "";
}

void NetworkRoom::startBus() {
  const std::string socket = folder_.file("bus");
  std::string bus = kBus;
  const std::string mark = "@SOCKET@";
  bus.replace(bus.find(mark), mark.size(), socket);
  setenv("DBUS_SYSTEM_BUS_ADDRESS", ("unix:path=" + socket).c_str(), 1);
  bus_.start({{KORVEL_DBUS_DAEMON, "--config-file=" + folder_.write("bus.conf", bus), "--nofork",
               "--nopidfile"},
              folder_.file("bus.log"),
              {}});
  ASSERT_TRUE(waitUntil(kSeconds, [&] { return fs::exists(socket); })) << folder_.read("bus.log");
}

void NetworkRoom::startResponder() {
  fs::create_directories("/run/avahi-daemon");
  fs::remove(folder_.file("avahi.log"));
  responder_.start({{KORVEL_AVAHI_DAEMON, "-f", folder_.write("avahi.conf", kResponder),
                     "--no-drop-root", "--no-chroot", "--no-rlimits"},
                    folder_.file("avahi.log"),
                    {}});
  const auto isUp = [&] {
    return folder_.read("avahi.log").find("startup complete") != std::string::npos;
  };
  ASSERT_TRUE(waitUntil(kSeconds, isUp)) << folder_.read("avahi.log");
}

void NetworkRoom::stopResponder() { responder_.stop(); }

// A thread may be in another network than its process, and its sockets stay there.
void NetworkRoom::atThePhone(const std::function<void()>& deed) const {
  std::thread([&deed] {
    const korvel::Descriptor network(open("/run/netns/phone", O_RDONLY | O_CLOEXEC));
    ASSERT_EQ(setns(network.get(), CLONE_NEWNET), 0);
    deed();
  }).join();
}

void NetworkRoom::movePhoneElsewhere() const {
  EXPECT_TRUE(
      did("ip -n phone addr del 10.77.0.2/24 dev lan1 && "
          "ip -n phone addr add 192.0.2.7/24 dev lan1 && ip -n phone route add default dev lan1"));
}

std::string stockConfiguration() {
  std::ifstream file(KORVEL_STOCK_DATADIR "/cupsd.conf.default");
  std::string text{std::istreambuf_iterator<char>(file), {}};
  const std::string socket = "/run/cups/cups.sock";
  const size_t place = text.find(socket);
  EXPECT_NE(place, std::string::npos) << text;
  if (place == std::string::npos) return "Listen @SOCKET@\n";
  return text.replace(place, socket.size(), "@SOCKET@");
}
