// Decides from a request's headers alone whether it may go on: against pages of other sites that
// use the visitor's browser, against names that were made to point here, and by token beyond this
// machine. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_GATEKEEPER_H
#define KORVEL_STUDIO_GATEKEEPER_H

#include <set>
#include <string>

#include "studio/sentences.h"

namespace korvel {

// The header that the page's own scripts send; other sites' pages cannot without asking first.
inline constexpr char kOwnHeader[] = "x-korvel-studio";
inline constexpr char kTokenCookie[] = "korvel-token";

struct Visit {
  std::string method;
  std::string path;
  std::string host;       // header Host
  std::string origin;     // header Origin; empty: not sent
  std::string fetchSite;  // header Sec-Fetch-Site
  bool hasOwnHeader = false;
  std::string authorization;
  std::string cookie;
};

class Gatekeeper {
 public:
  // An empty token lets everybody in; only for loopback addresses.
  Gatekeeper(bool loopback, const std::set<std::string>& names, const std::string& token);

  // Null, or why the request is refused.
  const Sentence* refusal(const Visit& visit) const;

  bool isToken(const std::string& text) const;
  const std::string& token() const { return token_; }

 private:
  bool knowsHost(const std::string& host) const;
  bool isFromOtherSite(const Visit& visit) const;
  bool hasToken(const Visit& visit) const;

  bool loopback_;
  std::set<std::string> names_;  // lower case
  std::string token_;
};

// 32 hex digits from the system's random numbers.
std::string unguessableName();

}  // namespace korvel

#endif
