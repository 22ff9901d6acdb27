// A picture's page is written directly; a PDF page is taken over as a form by qpdf.
// SPDX-License-Identifier: Apache-2.0
#include "studio/worker/page_composer.h"

#include <exception>
#include <fstream>
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

// Greys are reduced with smoothing. Two tones, such as a barcode's, keep hard edges when enlarged;
// the rasteriser decides by the flag alone, so a two-tone picture is never smoothed.
Result<void> composePicture(const GreyPicture& picture, double width, double height,
                            const PageLayout& layout, const std::string& target) {
  const std::string content = "q " + layout.matrix + " cm " + points(width) + " 0 0 " +
                              points(height) + " 0 0 cm /Picture Do Q\n";
  const std::string size =
      "/Width " + std::to_string(picture.width) + " /Height " + std::to_string(picture.height);
  std::ofstream out(target, std::ios::binary);
  std::vector<std::streamoff> offsets;
  const auto begin = [&](const std::string& body) {
    offsets.push_back(out.tellp());
    out << offsets.size() << " 0 obj\n" << body;
  };
  out << "%PDF-1.4\n";
  begin("<< /Type /Catalog /Pages 2 0 R >>\nendobj\n");
  begin("<< /Type /Pages /Kids [3 0 R] /Count 1 >>\nendobj\n");
  begin("<< /Type /Page /Parent 2 0 R /MediaBox " + mediaBox(layout) +
        " /Contents 4 0 R /Resources << /XObject << /Picture 5 0 R >> >> >>\nendobj\n");
  begin("<< /Length " + std::to_string(content.size()) + " >>\nstream\n" + content +
        "endstream\nendobj\n");
  begin("<< /Type /XObject /Subtype /Image " + size +
        " /ColorSpace /DeviceGray /BitsPerComponent 8 /Interpolate " +
        (picture.isTwoTone() ? "false" : "true") + " /Length " +
        std::to_string(picture.grey.size()) + " >>\nstream\n");
  out.write(reinterpret_cast<const char*>(picture.grey.data()),
            static_cast<std::streamsize>(picture.grey.size()));
  out << "\nendstream\nendobj\n";
  const std::streamoff table = out.tellp();
  out << "xref\n0 " << offsets.size() + 1 << "\n0000000000 65535 f \n";
  for (const std::streamoff offset : offsets) {
    const std::string digits = std::to_string(offset);
    out << std::string(10 - digits.size(), '0') << digits << " 00000 n \n";
  }
  out << "trailer << /Size " << offsets.size() + 1 << " /Root 1 0 R >>\nstartxref\n"
      << table << "\n%%EOF\n";
  out.close();
  if (!out) return Failure{kDiskFull.english};
  return {};
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
