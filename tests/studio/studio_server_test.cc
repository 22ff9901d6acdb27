// The real server between a real print system and the emulated printer, over HTTP.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "tests/spooler/documents.h"
#include "tests/spooler/picture.h"
#include "tests/spooler/private_spooler.h"
#include "tests/studio/studio_process.h"
#include "tests/studio/uploads.h"
#include "tests/tools/emulator/printer_process.h"

namespace {

using nlohmann::json;

constexpr double kJobSeconds = 200;  // a guard against hanging, no measure

// The print system, a printer for each of two queues, and the server.
class Shop {
 public:
  explicit Shop(const std::string& labelDriver = "korvel-label-203",
                const std::vector<std::string>& arguments = {})
      : labelPrinter(spooler.toolPath("korvel-printer"), {"--speed", "5000"}),
        stencilPrinter(spooler.toolPath("korvel-printer"),
                       {"--dpi", "300", "--media", "sheet", "--speed", "5000"}) {
    spooler.addQueue("labels", labelDriver, labelPrinter.port());
    spooler.addQueue("stencils", "korvel-stencil-300", stencilPrinter.port());
    studio = std::make_unique<StudioProcess>(spooler.toolPath("korvel-studio"), arguments,
                                             spooler.clientEnvironment());
  }

  std::string upload(const std::string& document) const {
    const Reply reply = studio->post("/api/documents?title=test", document);
    EXPECT_EQ(reply.status, 200) << reply.body;
    return "/api/documents/" + reply.json().value("id", "");
  }

  json waitForJob(int number) const {
    json job;
    waitUntil(kJobSeconds, [&] {
      job = studio->get("/api/jobs/" + std::to_string(number)).json();
      return job.value("ended", true);
    });
    return job;
  }

  PrivateSpooler spooler;
  ListeningPrinter labelPrinter;
  ListeningPrinter stencilPrinter;
  std::unique_ptr<StudioProcess> studio;
};

Picture shownDots(const Shop& shop, const json& preview) {
  const TemporaryFolder folder;
  const Reply picture = shop.studio->get(preview.at("image"));
  EXPECT_EQ(picture.status, 200);
  EXPECT_EQ(picture.headers.at("content-type"), "image/png");
  return readPicture(folder.write("dots.png", picture.body));
}

// ---- Preview and print ----

class Settings {
 public:
  explicit Settings(unsigned seed) : random_(seed) {}

  json order(const json& queue) {
    json options;
    for (const json& option : queue.at("options")) {
      options[option["name"].get<std::string>()] = pick(option.at("choices"))["value"];
    }
    options["PostAction"] = "None";
    options["PageSize"] = pick(queue.at("sizes"))["value"];
    const bool isStencil = options["HalftoneType"].get<std::string>().starts_with("Tattoo");
    if (!isStencil) options["NegativeImage"] = "False";
    const json fits = {"fit", "fill", "true", "own"};
    return {{"queue", queue.at("name")},
            {"options", options},
            {"page", 1},
            {"placement",
             {{"fit", pick(fits)},
              {"scale", 0.3 + static_cast<double>(below(20)) / 10},
              {"right", static_cast<double>(below(40)) - 20},
              {"down", static_cast<double>(below(40)) - 20},
              {"turn", below(3) == 0 ? static_cast<double>(below(360)) : 90.0 * below(4)}}}};
  }
  unsigned below(unsigned most) { return static_cast<unsigned>(random_() % most); }

 private:
  json pick(const json& list) { return list.at(below(static_cast<unsigned>(list.size()))); }
  std::mt19937 random_;
};

void expectEqualDots(unsigned seed, int count) {
  Shop shop;
  ASSERT_FALSE(testing::Test::HasFatalFailure());
  Settings settings(seed);
  const std::string documents[] = {
      shop.upload(noisyPng(300, 420, seed)),
      shop.upload(makePdf({barLabel(5), {595.28, 841.89, "0.4 g 100 100 300 500 re f"}})),
      shop.upload(orientedJpeg(6)),
  };
  const json queues[] = {shop.studio->get("/api/queues/labels?language=de").json(),
                         shop.studio->get("/api/queues/stencils").json()};
  const ListeningPrinter* printers[] = {&shop.labelPrinter, &shop.stencilPrinter};
  int printed[] = {0, 0};
  for (int i = 0; i < count; ++i) {
    const size_t which = settings.below(4) == 0 ? 1 : 0;
    const json order = settings.order(queues[which]);
    SCOPED_TRACE(order.dump());
    const std::string document = documents[settings.below(3)];
    const Reply preview = shop.studio->post(document + "/preview", order.dump());
    ASSERT_EQ(preview.status, 200) << preview.body;
    const Picture shown = shownDots(shop, preview.json());
    const Reply sent = shop.studio->post(document + "/print", order.dump());
    ASSERT_EQ(sent.status, 200) << sent.body;
    EXPECT_EQ(shop.waitForJob(sent.json()["job"]).value("state", ""), "done");
    const int sheet = ++printed[which];
    ASSERT_TRUE(
        printers[which]->waitForEvent("sheet " + std::to_string(sheet) + " out", kJobSeconds));
    EXPECT_EQ(difference(readPicture(printers[which]->pagePath(sheet)), shown), "");
  }
}

TEST(StudioServer, PrintsTheVeryDotsThatItShows) { expectEqualDots(1, 20); }
TEST(LongStudioServer, PrintsTheVeryDotsThatItShows) { expectEqualDots(2, 200); }

TEST(StudioServer, PrintsCopiesAndPagesByTheInterfaceForPrograms) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const std::string document = makePdf({barLabel(3), barLabel(9)});
  const Reply sent = shop.studio->post(
      "/api/print?queue=labels&PageSize=4x6&page=2&copies=3&title=Nine%20bars", document);
  ASSERT_EQ(sent.status, 200) << sent.body;
  const json job = shop.waitForJob(sent.json()["job"]);
  EXPECT_EQ(job["state"], "done");
  EXPECT_EQ(job["title"], "Nine bars");
  EXPECT_EQ(job["printer"]["name"], "labels");
  ASSERT_TRUE(shop.labelPrinter.waitForEvent("sheet 3 out", kJobSeconds));
  const Picture first = readPicture(shop.labelPrinter.pagePath(1));
  EXPECT_GT(first.printed(), 0u);
  EXPECT_EQ(difference(readPicture(shop.labelPrinter.pagePath(3)), first), "");
  EXPECT_TRUE(shop.labelPrinter.events({"sheet 4"}).empty());
  // Nothing of the document is kept.
  for (const std::string& name : shop.studio->privateFiles())
    EXPECT_TRUE(name.ends_with(".ppd") || name.starts_with("blank-")) << name;
}

TEST(StudioServer, TellsWhatThePrinterWaitsForAndCancels) {
  Shop shop("korvel-k220-203");
  ASSERT_FALSE(HasFatalFailure());
  shop.labelPrinter.command("out-of-paper");
  const std::string label = makePdf({barLabel(3)});
  const auto reasonsOf = [&](int number) {
    return shop.studio->get("/api/jobs/" + std::to_string(number)).json()["printer"]["reasons"];
  };
  const int waiting = shop.studio->post("/api/print?queue=labels", label).json()["job"];
  EXPECT_TRUE(waitUntil(kJobSeconds, [&] {
    return reasonsOf(waiting) == json{"media-empty-warning"};
  })) << reasonsOf(waiting);
  shop.labelPrinter.command("load");
  EXPECT_EQ(shop.waitForJob(waiting)["state"], "done");

  shop.labelPrinter.command("cover open");
  const int unwanted = shop.studio->post("/api/print?queue=labels", label).json()["job"];
  EXPECT_TRUE(waitUntil(kJobSeconds, [&] {
    return reasonsOf(unwanted) == json{"cover-open-warning"};
  })) << reasonsOf(unwanted);
  const std::string address = "/api/jobs/" + std::to_string(unwanted);
  EXPECT_EQ(shop.studio->request("DELETE", address).json()["state"], "canceled");
  EXPECT_EQ(shop.studio->request("DELETE", address).code(), "not-our-job");
  EXPECT_EQ(shop.spooler.jobState(unwanted), IPP_JSTATE_CANCELED);
}

TEST(StudioServer, FeedsTheMediaWithoutPrinting) {
  const struct {
    const char* query;
    std::vector<std::string> events;
  } kCases[] = {
      {"queue=labels&move=edge", {"feed mode 3 lines 0"}},
      {"queue=labels&move=back", {"feed mode 4 lines 0"}},
      {"queue=labels&move=edge&PaperType=LabelMark", {"feed mode 5 lines 0"}},
      {"queue=labels&move=cut", {"feed mode 3 lines 0", "cut", "feed mode 4 lines 0"}},
  };
  Shop shop("korvel-k220-203");
  ASSERT_FALSE(HasFatalFailure());
  const json feeds = {"back", "cut", "edge"};
  EXPECT_EQ(shop.studio->get("/api/queues/labels").json()["feeds"], feeds);
  EXPECT_EQ(shop.studio->get("/api/queues/stencils").json()["feeds"], json::array());
  std::vector<std::string> expected;
  for (const auto& c : kCases) {
    const Reply sent = shop.studio->post(std::string("/api/feed?") + c.query, "");
    ASSERT_EQ(sent.status, 200) << c.query << ": " << sent.body;
    EXPECT_EQ(shop.waitForJob(sent.json()["job"])["state"], "done") << c.query;
    expected.insert(expected.end(), c.events.begin(), c.events.end());
    const auto moves = [&] { return shop.labelPrinter.events({"feed mode", "cut", "sheet"}); };
    EXPECT_TRUE(waitUntil(kJobSeconds, [&] { return moves().size() >= expected.size(); }));
    EXPECT_EQ(moves(), expected) << c.query;
  }
  const struct {
    const char* method;
    const char* query;
    const char* code;
  } kRefused[] = {
      {"POST", "queue=stencils&move=edge", "bad-setting"},  // single sheets
      {"POST", "queue=labels&move=far", "bad-setting"},
      {"POST", "queue=labels", "bad-setting"},
      {"POST", "move=edge", "bad-request"},
      {"POST", "queue=nothing&move=edge", "no-queue"},
      {"GET", "queue=labels&move=edge", "wrong-method"},
  };
  for (const auto& c : kRefused) {
    EXPECT_EQ(shop.studio->request(c.method, std::string("/api/feed?") + c.query).code(), c.code)
        << c.query;
  }
}

// ---- Limits ----

TEST(StudioServer, AnswersWrongRequestsWithACodeAndASentence) {
  Shop shop("korvel-label-203", {"--queue", "labels"});
  ASSERT_FALSE(HasFatalFailure());
  const std::string document = shop.upload(noisyPng(50, 50, 1));
  const std::string png = noisyPng(10, 10, 1);
  const struct {
    const char* method;
    std::string target;
    std::string body;
    int status;
    const char* code;
  } kCases[] = {
      {"GET", "/api/nothing", "", 404, "not-found"},
      {"GET", "/nothing", "", 404, "not-found"},
      {"GET", "/../../../../etc/passwd", "", 404, "not-found"},
      {"GET", "/%2e%2e/%2e%2e/etc/passwd", "", 404, "not-found"},
      {"GET", "/languages/../../../CMakeLists.txt", "", 404, "not-found"},
      {"POST", "/", "", 405, "wrong-method"},
      {"DELETE", "/api/queues", "", 405, "wrong-method"},
      {"GET", "/api/queues/nothing", "", 404, "no-queue"},
      {"GET", "/api/queues/stencils", "", 404, "no-queue"},  // not offered
      {"GET", "/api/jobs/99999", "", 404, "no-job"},
      {"GET", "/api/jobs/-1", "", 404, "not-found"},
      {"GET", "/api/jobs/1;2", "", 404, "not-found"},
      {"GET", "/api/documents/0123456789abcdef0123456789abcdef", "", 404, "no-document"},
      {"GET", "/api/documents/..%2f..", "", 404, "no-document"},
      {"GET", document + "/dots/picture.pgm", "", 404, "no-document"},
      {"GET", document + "/dots/..%2fpicture.pgm", "", 404, "not-found"},
      {"POST", document + "/preview", "{}", 400, "bad-request"},
      {"POST", document + "/preview", R"({"queue":"nothing"})", 404, "no-queue"},
      {"POST", document + "/preview", R"({"queue":"labels","options":{"Darkness":"x"}})", 422,
       "bad-setting"},
      {"POST", document + "/preview",
       R"({"queue":"labels","options":{"NegativeImage":"True","HalftoneType":"None"}})", 422,
       "conflict"},
      {"POST", document + "/preview", R"({"queue":"labels","page":2})", 200, ""},
      {"POST", "/api/print?queue=labels&PageSize=7x7", png, 422, "bad-setting"},
      {"POST", "/api/print?queue=nothing", png, 404, "no-queue"},
      {"POST", "/api/print", png, 400, "bad-request"},
      {"POST", "/api/print?queue=labels&copies=1000", png, 400, "bad-request"},
      {"POST", "/api/print?queue=labels", "hello", 415, "unknown-kind"},
      {"POST", "/api/print?queue=labels", "", 422, "empty-file"},
      {"GET", "/api/print?queue=labels", "", 405, "wrong-method"},
  };
  for (const auto& c : kCases) {
    const Reply reply = shop.studio->request(c.method, c.target, c.body);
    EXPECT_EQ(reply.status, c.status) << c.target << ": " << reply.body;
    EXPECT_EQ(reply.code(), c.code) << c.target;
    EXPECT_NE(reply.headers.at("content-security-policy").find("default-src 'none'"),
              std::string::npos);
  }
  EXPECT_EQ(shop.studio->get("/api/queues").json()["queues"].size(), 1u);
}

TEST(StudioServer, RefusesOtherSitesAndOtherNames) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const auto codeWith = [&](const std::vector<std::string>& headers) {
    return shop.studio->request("POST", "/api/print?queue=labels", noisyPng(9, 9, 1), headers)
        .code();
  };
  EXPECT_EQ(codeWith({"Origin: http://shop.example"}), "cross-site");
  EXPECT_EQ(codeWith({"Origin: null"}), "cross-site");
  EXPECT_EQ(codeWith({"Sec-Fetch-Site: cross-site"}), "cross-site");
  EXPECT_EQ(codeWith({"Sec-Fetch-Site: same-site"}), "cross-site");
  EXPECT_EQ(codeWith({"Sec-Fetch-Site: same-origin"}), "cross-site");  // a form, without our header
  EXPECT_EQ(codeWith({"Host: shop.example"}), "wrong-host");
  EXPECT_EQ(codeWith({"Host: 127.0.0.1.shop.example"}), "wrong-host");
  EXPECT_EQ(codeWith({"Host: "}), "wrong-host");
  EXPECT_EQ(shop.studio->get("/api/jobs/1").code(), "no-job");  // none of them has printed
}

TEST(StudioServer, KeepsNothingOfRefusedUploadsAndEndsThemEarly) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const std::string png = noisyPng(600, 400, 1);
  for (const std::string& upload : {std::string(), std::string("hello"),
                                    png.substr(0, png.size() / 2), pngHeader(65000, 65000)}) {
    EXPECT_GE(shop.studio->post("/api/documents", upload).status, 400);
  }
  const Reply announced =
      shop.studio->request("POST", "/api/documents", "", {"Content-Length: 99999999999"});
  EXPECT_EQ(announced.code(), "too-large");
  // A chunk of more than 40 MB, in pieces.
  std::string chunked;
  const std::string piece(size_t{1} << 20, 'x');
  for (int i = 0; i < 41; ++i) chunked += "100000\r\n" + piece + "\r\n";
  const Reply streamed = shop.studio->request("POST", "/api/documents", chunked + "0\r\n\r\n",
                                              {"Transfer-Encoding: chunked"});
  EXPECT_EQ(streamed.code(), "too-large");
  // A visitor who goes away in the middle.
  shop.studio->exchange(
      "POST /api/documents HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n\r\nabc", 0.3);
  EXPECT_TRUE(waitUntil(20, [&] { return shop.studio->privateFiles().empty(); }))
      << testing::PrintToString(shop.studio->privateFiles());
}

TEST(StudioServer, SurvivesMalformedBodiesAndKeepsNothingOfThem) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const std::string head = "POST /api/documents HTTP/1.1\r\nHost: localhost\r\n";
  const std::string chunked = head + "Transfer-Encoding: chunked\r\n\r\n";
  for (const std::string& request :
       {chunked + "ZZ\r\nabc\r\n0\r\n\r\n", chunked + "ffffffffffffffffff\r\nabc",
        chunked + "-1\r\nabc\r\n0\r\n\r\n", chunked + "3\r\nabcdef\r\n0\r\n\r\n",
        head + "Content-Length: -5\r\n\r\nabcde", head + "Content-Length: 5 5\r\n\r\nabcde",
        head + "Content-Length: 3\r\nContent-Length: 4\r\n\r\nabcd",
        "POST /api/documents HTTP/1.1\r\n" + std::string(70000, 'a') + ": b\r\n\r\n"}) {
    const std::string answer = shop.studio->exchange(request, 1);
    EXPECT_FALSE(answer.starts_with("HTTP/1.1 2")) << request.substr(0, 120) << "\n" << answer;
  }
  EXPECT_EQ(shop.studio->get("/api/queues").status, 200);
  EXPECT_TRUE(waitUntil(20, [&] { return shop.studio->privateFiles().empty(); }))
      << testing::PrintToString(shop.studio->privateFiles());
}

TEST(StudioServer, TakesNamesForTextOnly) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const struct {
    const char* name;
    std::string title;
  } kCases[] = {
      {"..%2f..%2f..%2fetc%2fpasswd", "../../../etc/passwd"},
      {"a%0d%0aSet-Cookie:%20b", "aSet-Cookie: b"},
      {"%1b[31mred", "[31mred"},
      {"-o%20raw", "-o raw"},
      {"%3Cscript%3E", "<script>"},
      {"", "korvel-studio"},
  };
  for (const auto& c : kCases) {
    const Reply made =
        shop.studio->post("/api/documents?title=" + std::string(c.name), noisyPng(9, 9, 1));
    EXPECT_EQ(made.json().value("title", ""), c.title) << c.name;
    EXPECT_FALSE(made.headers.contains("set-cookie"));
  }
  for (const std::string& file : shop.studio->privateFiles()) EXPECT_EQ(file, "picture.pgm");
}

TEST(StudioServer, TakesUploadsWhile200UnfinishedOnesAreHeld) {
  constexpr size_t kMostUploads = 16;
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  std::vector<int> held;
  const std::string start =
      "POST /api/documents HTTP/1.1\r\nHost: localhost\r\nContent-Length: 1000\r\n\r\nabc";
  for (int i = 0; i < 200; ++i) {
    held.push_back(shop.studio->connect());
    EXPECT_EQ(write(held.back(), start.data(), start.size()), static_cast<ssize_t>(start.size()));
  }
  for (int i = 0; i < 5; ++i) shop.upload(noisyPng(9, 9, 1));
  const auto unfinished = [&] {
    const std::vector<std::string> files = shop.studio->privateFiles();
    return static_cast<size_t>(std::count(files.begin(), files.end(), "upload"));
  };
  EXPECT_TRUE(waitUntil(20, [&] { return unfinished() <= kMostUploads; })) << unfinished();
  for (const int connection : held) close(connection);
  EXPECT_TRUE(waitUntil(20, [&] { return unfinished() == 0; })) << unfinished();
}

TEST(StudioServer, LimitsTheNumberOfDocumentsAndForgetsThoseThatAreClosed) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  const std::string png = noisyPng(9, 9, 1);
  std::vector<std::string> documents;
  for (int i = 0; i < 24; ++i) documents.push_back(shop.upload(png));
  EXPECT_EQ(shop.studio->post("/api/documents", png).code(), "too-many-documents");
  EXPECT_EQ(shop.studio->request("DELETE", documents[0]).status, 200);
  EXPECT_EQ(shop.studio->get(documents[0]).code(), "no-document");
  EXPECT_EQ(shop.studio->post("/api/documents", png).status, 200);
}

TEST(StudioServer, ServesOthersWhile200ConnectionsAreHeld) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  std::vector<int> held;
  for (int i = 0; i < 200; ++i) {
    held.push_back(shop.studio->connect());
    const std::string start = "GET / HTTP/1.1\r\nHost: lo";
    EXPECT_EQ(write(held.back(), start.data(), start.size()), static_cast<ssize_t>(start.size()));
  }
  EXPECT_EQ(shop.studio->get("/api/queues").status, 200);
  EXPECT_EQ(shop.studio->post("/api/print?queue=labels", makePdf({barLabel(2)})).status, 200);
  for (const int connection : held) close(connection);
}

TEST(StudioServer, EndsWithoutLeavingFiles) {
  Shop shop;
  ASSERT_FALSE(HasFatalFailure());
  shop.upload(noisyPng(50, 50, 1));
  EXPECT_FALSE(shop.studio->privateFiles().empty());
  shop.studio->stop();
  EXPECT_TRUE(shop.studio->privateFiles().empty());
}

TEST(StudioServer, AsksForTheTokenWhenItHasOne) {
  const TemporaryFolder folder;
  const std::string token = "a-token-of-the-test-0123456789";
  Shop shop("korvel-label-203", {"--token-file", folder.write("token", token + "\n")});
  ASSERT_FALSE(HasFatalFailure());
  EXPECT_EQ(shop.studio->get("/api/queues").code(), "no-token");
  EXPECT_EQ(
      shop.studio->request("GET", "/api/queues", "", {"Authorization: Bearer " + token}).status,
      200);
  const Reply entered = shop.studio->get("/?token=" + token);
  EXPECT_EQ(entered.status, 303);
  EXPECT_EQ(entered.headers.at("location"), "/");
  const std::string cookie = entered.headers.at("set-cookie");
  EXPECT_NE(cookie.find("HttpOnly"), std::string::npos);
  EXPECT_NE(cookie.find("SameSite=Strict"), std::string::npos);
  const std::string back = "Cookie: " + cookie.substr(0, cookie.find(';'));
  EXPECT_EQ(shop.studio->request("GET", "/api/queues", "", {back}).status, 200);
  EXPECT_EQ(shop.studio->get("/?token=wrong").status, 200);  // the page, without a cookie
}

}  // namespace
