// Plain text throughout: objects, their table, the trailer.
// SPDX-License-Identifier: Apache-2.0
#include "tests/spooler/documents.h"

#include <cstdio>
#include <sstream>

std::string makePdf(const std::vector<PdfPage>& pages) {
  std::ostringstream kids;
  std::vector<std::string> bodies = {"<< /Type /Catalog /Pages 2 0 R >>", ""};
  for (const PdfPage& page : pages) {
    std::ostringstream leaf;
    leaf << "<< /Type /Page /Parent 2 0 R /Resources << >> /MediaBox [0 0 " << page.width << " "
         << page.height << "] /Contents " << bodies.size() + 2 << " 0 R >>";
    kids << bodies.size() + 1 << " 0 R ";
    bodies.push_back(leaf.str());
    bodies.push_back("<< /Length " + std::to_string(page.drawing.size()) + " >>\nstream\n" +
                     page.drawing + "\nendstream");
  }
  bodies[1] =
      "<< /Type /Pages /Count " + std::to_string(pages.size()) + " /Kids [" + kids.str() + "] >>";

  std::string text = "%PDF-1.4\n";
  std::string places = "0000000000 65535 f \n";
  for (size_t i = 0; i < bodies.size(); ++i) {
    char place[32];
    std::snprintf(place, sizeof place, "%010zu 00000 n \n", text.size());
    places += place;
    text += std::to_string(i + 1) + " 0 obj\n" + bodies[i] + "\nendobj\n";
  }
  const std::string count = std::to_string(bodies.size() + 1);
  const std::string table = std::to_string(text.size());
  return text + "xref\n0 " + count + "\n" + places + "trailer\n<< /Root 1 0 R /Size " + count +
         " >>\nstartxref\n" + table + "\n%%EOF\n";
}

PdfPage barLabel(int number) {
  std::string drawing = "0.6 g 150 150 100 200 re f 0 g ";
  for (int i = 0; i < number; ++i) {
    drawing += std::to_string(20 + 12 * i) + " 60 7 300 re f ";
  }
  return {288, 432, drawing};
}
