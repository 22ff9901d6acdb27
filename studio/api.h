// What the server answers: the page's files, and the interface that the page and other programs
// use. SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_STUDIO_API_H
#define KORVEL_STUDIO_API_H

#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "studio/document_store.h"
#include "studio/gatekeeper.h"
#include "studio/http_server.h"
#include "studio/page_assets.h"
#include "studio/print_queues.h"
#include "studio/renderer.h"

namespace korvel {

// What the parts of an answer come from; all borrowed.
struct StudioParts {
  const Gatekeeper* gatekeeper;
  const PageAssets* assets;
  DocumentStore* documents;
  PrintQueues* queues;
  Renderer* renderer;
};

// What a request asks to preview or print.
struct PrintOrder {
  std::string queue;
  Choices choices;  // as asked for, not complete
  Placement placement;
  unsigned page = 1;
  int copies = 1;
  std::string view = "main";
};

// Both refuse numbers out of range and values of the wrong kind.
Result<PrintOrder> orderFromJson(const std::string& text);
Result<PrintOrder> orderFromQuery(const std::map<std::string, std::string>& query);

class Api : public HttpHandler {
 public:
  explicit Api(const StudioParts& parts) : parts_(parts) {}

  std::optional<HttpResponse> admit(HttpRequest* request) override;
  HttpResponse answer(HttpRequest* request) override;
  HttpResponse tooLarge() override;

 private:
  using Json = nlohmann::json;
  struct Order {
    Queue queue;
    PageSettings settings;
  };
  struct Made {
    PageShape shape;
    MadeFile raster;
    MadeFile dots;
  };
  // Checks an order against the queue's driver.
  Result<Order> prepare(const PrintOrder& order);
  Result<Made> make(Document* document, const Order& order, Ticket* ticket);

  Result<Json> answerApi(HttpRequest* request);
  Result<Json> answerQueues(const HttpRequest& request);
  Result<Json> answerDocuments(HttpRequest* request);
  Result<Json> answerJobs(const HttpRequest& request);
  Result<Json> upload(HttpRequest* request);
  Result<Json> preview(const std::shared_ptr<Document>& document, const PrintOrder& order);
  Result<Json> barcodes(const std::shared_ptr<Document>& document, const PrintOrder& order);
  Result<Json> print(const std::shared_ptr<Document>& document, const PrintOrder& order);
  Result<Json> printUpload(HttpRequest* request);
  Result<Json> feed(const HttpRequest& request);
  Result<std::shared_ptr<Document>> import(HttpRequest* request);
  std::optional<HttpResponse> dotsPicture(const HttpRequest& request);
  HttpResponse asset(const HttpRequest& request) const;

  StudioParts parts_;
};

}  // namespace korvel

#endif
