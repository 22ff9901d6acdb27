// A page of a PDF file is taken over as a form by qpdf.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/page_composer.h"

#include <exception>
#include <qpdf/QPDF.hh>
#include <qpdf/QPDFPageDocumentHelper.hh>
#include <qpdf/QPDFPageObjectHelper.hh>
#include <qpdf/QPDFWriter.hh>

#include "studio/placement.h"
#include "studio/sentences.h"

namespace korvel {
namespace {

constexpr size_t kMostPages = 500;
constexpr double kLongestSide = 14400;  // points, the longest that PDF knows

std::string points(double value) {
  const std::string text = matrixText({value, 0, 0, 0, 0, 0});
  return text.substr(0, text.find(' '));
}

std::string mediaBox(const PageLayout& layout) {
  return "[0 0 " + points(layout.width) + " " + points(layout.height) + "]";
}

Failure damage(const std::exception& reason) {
  const std::string text = reason.what();
  return Failure{text.find("password") != std::string::npos ? kEncrypted.english
                                                            : kDamaged.english};
}

void openQuietly(QPDF* pdf, const std::string& path) {
  pdf->setSuppressWarnings(true);
  pdf->processFile(path.c_str());
}

// The page as a form of its own size, standing upright at the origin.
PdfPageSize sizeOf(QPDFPageObjectHelper page) {
  const QPDFObjectHandle::Rectangle box = page.getTrimBox().getArrayAsRectangle();
  QPDFObjectHandle rotate = page.getAttribute("/Rotate", false);
  const bool turned = rotate.isInteger() && rotate.getIntValue() % 180 != 0;
  const double width = box.urx - box.llx;
  const double height = box.ury - box.lly;
  return turned ? PdfPageSize{height, width} : PdfPageSize{width, height};
}

bool isSane(const PdfPageSize& size) {
  return size.width > 1 && size.height > 1 && size.width <= kLongestSide &&
         size.height <= kLongestSide;
}

void addForm(QPDF* target, QPDFPageObjectHelper source, const PageLayout& layout) {
  const PdfPageSize size = sizeOf(source);
  const QPDFObjectHandle form = target->copyForeignObject(source.getFormXObjectForPage());
  QPDFObjectHandle page = target->makeIndirectObject(QPDFObjectHandle::parse(
      "<< /Type /Page /MediaBox " + mediaBox(layout) + " /Resources << /XObject << >> >> >>"));
  page.getKey("/Resources").getKey("/XObject").replaceKey("/Page", form);
  QPDFPageObjectHelper helper(page);
  const QPDFMatrix onto = helper.getMatrixForFormXObjectPlacement(
      form, QPDFObjectHandle::Rectangle(0, 0, size.width, size.height), false, true, true);
  const std::string content = "q " + layout.matrix + " cm " + onto.unparse() + " cm /Page Do Q\n";
  page.replaceKey("/Contents", QPDFObjectHandle::newStream(target, content));
  QPDFPageDocumentHelper(*target).addPage(helper, false);
}

}  // namespace

Result<std::vector<PdfPageSize>> readPdfPages(const std::string& path) {
  try {
    QPDF pdf;
    openQuietly(&pdf, path);
    std::vector<PdfPageSize> sizes;
    for (const QPDFPageObjectHelper& page : QPDFPageDocumentHelper(pdf).getAllPages()) {
      if (sizes.size() == kMostPages) return Failure{kTooManyPages.english};
      sizes.push_back(sizeOf(page));
      if (!isSane(sizes.back())) return Failure{kDamaged.english};
    }
    if (sizes.empty()) return Failure{kDamaged.english};
    return sizes;
  } catch (const std::exception& reason) {
    return damage(reason);
  }
}

Result<void> composeBlankPage(const PageLayout& layout, const std::string& target) {
  try {
    QPDF composed;
    composed.emptyPDF();
    const QPDFObjectHandle page = composed.makeIndirectObject(QPDFObjectHandle::parse(
        "<< /Type /Page /MediaBox " + mediaBox(layout) + " /Resources << >> >>"));
    QPDFPageDocumentHelper(composed).addPage(QPDFPageObjectHelper(page), false);
    QPDFWriter(composed, target.c_str()).write();
    return {};
  } catch (const std::exception&) {
    return Failure{kDiskFull.english};
  }
}

Result<void> composePdfPage(const std::string& path, unsigned number, const PageLayout& layout,
                            const std::string& target) {
  try {
    QPDF source;
    openQuietly(&source, path);
    QPDFPageDocumentHelper pages(source);
    pages.flattenAnnotations();
    const std::vector<QPDFPageObjectHelper> all = pages.getAllPages();
    if (number < 1 || number > all.size()) return Failure{kNoSuchPage.english};
    QPDF composed;
    composed.emptyPDF();
    addForm(&composed, all[number - 1], layout);
    QPDFWriter writer(composed, target.c_str());
    writer.setStreamDataMode(qpdf_s_preserve);
    writer.write();
    return {};
  } catch (const std::exception& reason) {
    return damage(reason);
  }
}

}  // namespace korvel
