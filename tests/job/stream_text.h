// Parses a stream of printer commands strictly and shows it with one line per packet; joins each
// page's image blocks to a picture. Shares no code with the filter.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_TESTS_JOB_STREAM_TEXT_H
#define KORVEL_TESTS_JOB_STREAM_TEXT_H

#include <cstdint>
#include <string>
#include <vector>

// The dots of one page as they were sent.
struct SentPicture {
  uint32_t areaWidth = 0;           // dots, of the print area
  std::vector<std::string> blocks;  // image data, block by block

  // Bytes per row: from the area's width if the image set it. For an image as wide as the widest
  // media, from the first of several blocks, which has four rows; a single block is one row.
  uint32_t bytesPerRow() const;
  // Portable bitmap; plain text up to 80 dots wide. Bytes missing in the last row are blank.
  std::string pbm() const;
};

struct StreamText {
  std::vector<std::string> lines;
  std::vector<SentPicture> pictures;
  std::string fault;  // offset and kind of a framing error; empty for a valid stream

  std::string text() const;  // all lines, each with a line end
};

StreamText readStream(const std::string& bytes);

// "64 0E 40": bytes as hex text.
std::string hexText(const std::string& bytes);
// The inverse; blanks are ignored.
std::string bytesOf(const std::string& hex);

// Polynomial 0xEDB88320, as in zip files.
uint32_t crc32Of(const std::string& bytes);

#endif
