// Documents of the tests: PDF files of a few shapes, and where the examples lie.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_SPOOLER_DOCUMENTS_H
#define KORVEL_TESTS_SPOOLER_DOCUMENTS_H

#include <string>
#include <vector>

// A page of so many points with drawing commands of the PDF language.
struct PdfPage {
  double width;
  double height;
  std::string drawing;
};

std::string makePdf(const std::vector<PdfPage>& pages);

// A label of 4 by 6 inches with `number` bars beside a grey field, so that each page is its own.
PdfPage barLabel(int number);

#endif
