// One function for each kind of address.
// SPDX-License-Identifier: Apache-2.0
#include "studio/api.h"

#include <algorithm>
#include <cctype>
#include <utility>
#include <vector>

#include "studio/parse_number.h"
#include "studio/sentences.h"
#include "tools/common/file_content.h"
#include "tools/common/units.h"

namespace korvel {
namespace {

using nlohmann::json;

constexpr size_t kMostUpload = size_t{40} << 20;
constexpr size_t kMostJson = size_t{64} << 10;
constexpr size_t kMostTitle = 100;

std::string dump(const json& value) {
  return value.dump(-1, ' ', false, json::error_handler_t::replace);
}

HttpResponse refusal(const std::string& sentence) {
  HttpResponse response;
  const std::string code = codeOf(sentence);
  response.status = statusOf(code);
  response.body = dump({{"error", sentence}, {"code", code}}) + "\n";
  if (response.status == 401) response.headers.emplace_back("WWW-Authenticate", "Bearer");
  return response;
}

HttpResponse refusal(const Sentence& sentence) { return refusal(std::string(sentence.english)); }

// "/api/jobs/7" -> "api", "jobs", "7".
std::vector<std::string> partsOf(const std::string& path) {
  std::vector<std::string> parts;
  for (size_t at = 1; at <= path.size();) {
    const size_t end = std::min(path.find('/', at), path.size());
    parts.push_back(path.substr(at, end - at));
    at = end + 1;
  }
  return parts;
}

// A document's name becomes the job's title: one line, no control characters, not too long.
std::string titleOf(const std::string& name) {
  std::string title;
  for (const char c : name) {
    if (static_cast<unsigned char>(c) >= 32 && c != 127) title += c;
  }
  if (title.size() > kMostTitle) {
    title.resize(kMostTitle);
    while (!title.empty() && (static_cast<unsigned char>(title.back()) & 0xC0) == 0x80) {
      title.pop_back();
    }
    if (!title.empty() && static_cast<unsigned char>(title.back()) >= 0xC0) title.pop_back();
  }
  return title.empty() ? "korvel-studio" : title;
}

json describe(const QueueState& queue) {
  return {{"name", queue.name},       {"info", queue.info},          {"location", queue.location},
          {"model", queue.model},     {"state", queue.state},        {"reasons", queue.reasons},
          {"message", queue.message}, {"accepting", queue.accepting}};
}

json describe(const Document& document) {
  json described = {{"id", document.id()},
                    {"title", document.title},
                    {"kind", document.isPdf ? "pdf" : "picture"},
                    {"pages", document.isPdf ? document.pages.size() : 1}};
  if (!document.isPdf) {
    described["width"] = document.width;
    described["height"] = document.height;
    described["dpi"] = document.dpi;
  }
  return described;
}

json describe(const PageGeometry& page) {
  return {{"width", page.width / kPointsPerMm},
          {"height", page.height / kPointsPerMm},
          {"margins",
           {page.left / kPointsPerMm, page.top / kPointsPerMm, page.right / kPointsPerMm,
            page.bottom / kPointsPerMm}}};
}

// Where the dots lie on the media, in millimetres. They begin where the printable area begins; what
// the driver draws around the page reaches beyond it on both sides.
json areaOf(const MadeFile& dots, const MadeFile& raster, const PageGeometry& page, unsigned dpi) {
  constexpr size_t kPadding = 8;  // rows are filled up to whole bytes
  const double mmPerDot = kMmPerInch / dpi;
  const double beyondX = dots.width >= raster.width + kPadding
                             ? static_cast<double>(dots.width - raster.width) / 2
                             : 0;
  const double beyondY =
      dots.height > raster.height ? static_cast<double>(dots.height - raster.height) / 2 : 0;
  return {{"left", page.left / kPointsPerMm - beyondX * mmPerDot},
          {"top", page.top / kPointsPerMm - beyondY * mmPerDot},
          {"width", static_cast<double>(dots.width) * mmPerDot},
          {"height", static_cast<double>(dots.height) * mmPerDot}};
}

// The document as it lies on the page, before it is turned about its middle.
json describe(const PageShape& shape, const Placement& placement) {
  return {{"scale", shape.placed.scale},
          {"width", shape.document.width * shape.placed.scale / kPointsPerMm},
          {"height", shape.document.height * shape.placed.scale / kPointsPerMm},
          {"right", placement.right},
          {"down", placement.down},
          {"turn", placement.turn}};
}

bool isUpload(const HttpRequest& request) {
  return request.method == "POST" &&
         (request.path == "/api/documents" || request.path == "/api/print");
}

Visit visitOf(const HttpRequest& request) {
  return {request.method,
          request.path,
          request.header("host"),
          request.header("origin"),
          request.header("sec-fetch-site"),
          request.headers.contains(kOwnHeader),
          request.header("authorization"),
          request.header("cookie")};
}

}  // namespace

// ---- Before the body ----

std::optional<HttpResponse> Api::admit(HttpRequest* request) {
  const Sentence* refused = parts_.gatekeeper->refusal(visitOf(*request));
  if (refused != nullptr) return refusal(*refused);
  if (!isUpload(*request)) {
    request->mostBody = kMostJson;
    return std::nullopt;
  }
  if (request->path == "/api/print") {
    const Result<PrintOrder> order = orderFromQuery(request->query);
    if (!order) return refusal(order.sentence());
  }
  Result<std::shared_ptr<Document>> document = parts_.documents->create();
  if (!document) return refusal(document.sentence());
  request->mostBody = kMostUpload;
  request->bodyFile = document.value()->file("upload");
  request->kept = *document;
  return std::nullopt;
}

HttpResponse Api::tooLarge() { return refusal(kTooLarge); }

// ---- Answers ----

HttpResponse Api::answer(HttpRequest* request) {
  if (!request->path.starts_with("/api/")) return asset(*request);
  if (const auto picture = dotsPicture(*request)) return *picture;
  const Result<Json> answered = answerApi(request);
  if (!answered) return refusal(answered.sentence());
  HttpResponse response;
  response.body = dump(answered.value()) + "\n";
  return response;
}

// The address that carries the token is left at once, so that it stays out of the page's history.
HttpResponse Api::asset(const HttpRequest& request) const {
  if (request.method != "GET" && request.method != "HEAD") return refusal(kWrongMethod);
  const std::string token = request.parameter("token");
  HttpResponse response;
  if (request.path == "/" && parts_.gatekeeper->isToken(token)) {
    response.status = 303;
    response.headers = {
        {"Location", "/"},
        {"Set-Cookie", std::string(kTokenCookie) + "=" + token +
                           "; Path=/; HttpOnly; SameSite=Strict; Max-Age=31536000"}};
    return response;
  }
  const PageAsset* found = parts_.assets->find(request.path);
  if (found == nullptr) return refusal(kNotFound);
  response.type = found->type;
  response.body = found->content;
  response.headers = {{"Cache-Control", "no-cache"}};
  return response;
}

Result<Api::Json> Api::answerApi(HttpRequest* request) {
  const std::vector<std::string> parts = partsOf(request->path);
  const std::string kind = parts.size() > 1 ? parts[1] : "";
  if (kind == "queues") return answerQueues(*request);
  if (kind == "documents") return answerDocuments(request);
  if (kind == "jobs") return answerJobs(*request);
  if (kind == "print" && parts.size() == 2) {
    if (request->method != "POST") return Failure{kWrongMethod.english};
    return printUpload(request);
  }
  if (kind == "feed" && parts.size() == 2) return feed(*request);
  return Failure{kNotFound.english};
}

// ---- Queues and jobs ----

Result<Api::Json> Api::answerQueues(const HttpRequest& request) {
  if (request.method != "GET") return Failure{kWrongMethod.english};
  const std::vector<std::string> parts = partsOf(request.path);
  if (parts.size() > 3) return Failure{kNotFound.english};
  if (parts.size() == 3) {
    const Result<QueueState> state = parts_.queues->state(parts[2]);
    if (!state) return state.failure();
    const Result<Queue> queue = parts_.queues->queue(parts[2]);
    if (!queue) return queue.failure();
    Json described = describe(state.value());
    described.update(queue.value().driver->describe(request.parameter("language")));
    return described;
  }
  const Result<std::vector<QueueState>> queues = parts_.queues->list();
  if (!queues) return queues.failure();
  Json list = Json::array();
  for (const QueueState& queue : queues.value()) list.push_back(describe(queue));
  return Json{{"queues", list}};
}

Result<Api::Json> Api::answerJobs(const HttpRequest& request) {
  const std::vector<std::string> parts = partsOf(request.path);
  int number = 0;
  if (parts.size() != 3 || !parseCount(parts[2], &number)) return Failure{kNotFound.english};
  if (request.method == "DELETE") {
    const Result<void> cancelled = parts_.queues->cancel(number);
    if (!cancelled) return cancelled.failure();
  } else if (request.method != "GET") {
    return Failure{kWrongMethod.english};
  }
  const Result<JobState> job = parts_.queues->job(number);
  if (!job) return job.failure();
  const Result<QueueState> printer = parts_.queues->state(job.value().queue);
  if (!printer) return printer.failure();
  return Json{{"job", number},
              {"title", job.value().title},
              {"state", job.value().state},
              {"ended", job.value().hasEnded()},
              {"message", job.value().message},
              {"sheets", job.value().sheets},
              {"printer", describe(printer.value())}};
}

Result<Api::Json> Api::feed(const HttpRequest& request) {
  if (request.method != "POST") return Failure{kWrongMethod.english};
  std::map<std::string, std::string> query = request.query;
  query.erase("move");
  const Result<PrintOrder> asked = orderFromQuery(query);
  if (!asked) return asked.failure();
  const Result<Order> order = prepare(asked.value());
  if (!order) return order.failure();
  const Result<std::string> commands = order.value().queue.driver->feedJob(
      request.parameter("move"), order.value().settings.choices);
  if (!commands) return commands.failure();
  const Result<int> job =
      parts_.queues->sendCommands(asked.value().queue, "Media feed", commands.value());
  if (!job) return job.failure();
  return Json{{"job", job.value()}, {"queue", asked.value().queue}};
}

// ---- Documents ----

Result<std::shared_ptr<Document>> Api::import(HttpRequest* request) {
  const auto document = std::static_pointer_cast<Document>(request->kept);
  if (!document) return Failure{kBadRequest.english};
  const Result<void> counted = parts_.documents->complete(document);
  if (!counted) return counted.failure();
  document->title = titleOf(request->parameter("title"));
  const Result<void> read = parts_.renderer->import(document.get(), document->file("upload"));
  if (!read) return read.failure();
  return document;
}

Result<Api::Json> Api::upload(HttpRequest* request) {
  const Result<std::shared_ptr<Document>> document = import(request);
  if (!document) return document.failure();
  parts_.documents->publish(document.value());
  return describe(*document.value());
}

Result<Api::Json> Api::answerDocuments(HttpRequest* request) {
  const std::vector<std::string> parts = partsOf(request->path);
  const bool isPost = request->method == "POST";
  if (parts.size() == 2) {
    if (!isPost) return Failure{kWrongMethod.english};
    return upload(request);
  }
  const std::shared_ptr<Document> document = parts_.documents->find(parts[2]);
  if (!document) return Failure{kNoDocument.english};
  const std::string action = parts.size() == 4 ? parts[3] : "";
  if (parts.size() == 3 && request->method == "GET") return describe(*document);
  if (parts.size() == 3 && request->method == "DELETE") {
    parts_.documents->remove(document->id());
    return Json::object();
  }
  if (!isPost) return Failure{parts.size() == 3 ? kWrongMethod.english : kNotFound.english};
  if (action == "leave") {
    parts_.documents->leave(document->id());
    return Json::object();
  }
  if (action != "preview" && action != "print" && action != "barcodes") {
    return Failure{kNotFound.english};
  }
  const Result<PrintOrder> order = orderFromJson(request->body);
  if (!order) return order.failure();
  if (action == "print") return print(document, order.value());
  return action == "barcodes" ? barcodes(document, order.value())
                              : preview(document, order.value());
}

Result<Api::Order> Api::prepare(const PrintOrder& order) {
  Result<Queue> queue = parts_.queues->queue(order.queue);
  if (!queue) return queue.failure();
  const Result<Choices> choices = queue->driver->complete(order.choices);
  if (!choices) return choices.failure();
  return Order{*queue, {choices.value(), order.placement, order.page}};
}

Result<Api::Made> Api::make(Document* document, const Order& order, Ticket* ticket) {
  const Result<PageShape> shape = parts_.renderer->shape(*document, order.queue, order.settings);
  if (!shape) return shape.failure();
  const Result<MadeFile> raster =
      parts_.renderer->page(document, order.queue, order.settings, shape.value(), ticket);
  if (!raster) return raster.failure();
  const Result<MadeFile> dots =
      parts_.renderer->dots(document, order.queue, order.settings, raster.value(), ticket);
  if (!dots) return dots.failure();
  return Made{shape.value(), raster.value(), dots.value()};
}

Result<Api::Json> Api::preview(const std::shared_ptr<Document>& document, const PrintOrder& asked) {
  const std::shared_ptr<Ticket> ticket = document->begin(asked.view);
  const Result<Order> order = prepare(asked);
  if (!order) return order.failure();
  const Result<Made> made = make(document.get(), order.value(), ticket.get());
  if (!made) return made.failure();
  const auto& [shape, raster, dots] = made.value();
  const unsigned dpi = order.value().queue.driver->dpi();
  return Json{{"picture", dots.name},
              {"image", "/api/documents/" + document->id() + "/dots/" + dots.name},
              {"width", dots.width},
              {"height", dots.height},
              {"printed", dots.printed},
              {"dpi", dpi},
              {"page", describe(shape.geometry)},
              {"area", areaOf(dots, raster, shape.geometry, dpi)},
              {"placed", describe(shape, asked.placement)}};
}

Result<Api::Json> Api::barcodes(const std::shared_ptr<Document>& document,
                                const PrintOrder& asked) {
  const std::shared_ptr<Ticket> ticket = document->begin(asked.view);
  const Result<Order> order = prepare(asked);
  if (!order) return order.failure();
  const Result<Made> made = make(document.get(), order.value(), ticket.get());
  if (!made) return made.failure();
  return parts_.renderer->barcodes(made.value().raster, made.value().dots);
}

// The same raster page and the same options that the preview's dots were made of.
Result<Api::Json> Api::print(const std::shared_ptr<Document>& document, const PrintOrder& asked) {
  const Result<Order> order = prepare(asked);
  if (!order) return order.failure();
  const auto& [queue, settings] = order.value();
  const Result<PageShape> shape = parts_.renderer->shape(*document, queue, settings);
  if (!shape) return shape.failure();
  Ticket ticket;
  const Result<MadeFile> raster =
      parts_.renderer->page(document.get(), queue, settings, shape.value(), &ticket);
  if (!raster) return raster.failure();
  const Result<int> job = parts_.queues->print(
      {asked.queue, document->title, settings.choices, *raster.value().path, asked.copies});
  if (!job) return job.failure();
  return Json{{"job", job.value()}, {"queue", asked.queue}};
}

// A document that no page shows is gone with its request.
Result<Api::Json> Api::printUpload(HttpRequest* request) {
  const Result<PrintOrder> order = orderFromQuery(request->query);
  if (!order) return order.failure();
  const Result<std::shared_ptr<Document>> document = import(request);
  if (!document) return document.failure();
  return print(document.value(), order.value());
}

// /api/documents/ID/dots/NAME. The name stands for its content, so browsers may keep it.
std::optional<HttpResponse> Api::dotsPicture(const HttpRequest& request) {
  const std::vector<std::string> parts = partsOf(request.path);
  if (parts.size() != 5 || parts[1] != "documents" || parts[3] != "dots") return std::nullopt;
  if (request.method != "GET") return refusal(kWrongMethod);
  const std::shared_ptr<Document> document = parts_.documents->find(parts[2]);
  if (!document) return refusal(kNoDocument);
  const auto dots = document->findDotsNamed(parts[4]);
  if (!dots) return refusal(kNoDocument);
  HttpResponse response;
  response.type = "image/png";
  response.body = contentOf(*dots->path);
  response.headers = {{"Cache-Control", "private, max-age=3600, immutable"}};
  return response;
}

}  // namespace korvel
