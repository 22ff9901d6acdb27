// Reads a printer stream strictly and tells it in one line a packet; puts each page's image
// blocks together as a picture. Shares nothing with the filter.
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

  // Bytes a row: the area's width where the image set it. An image as wide as the widest media
  // leaves that to the first of several blocks, which has four rows; a lone block is one row.
  uint32_t bytesPerRow() const;
  // Portable bitmap; plain text up to 80 dots wide. Bytes missing in the last row are blank.
  std::string pbm() const;
};

struct StreamText {
  std::vector<std::string> lines;
  std::vector<SentPicture> pictures;
  std::string fault;  // where and why the framing breaks; empty for a sound stream

  std::string text() const;  // all lines, each ended
};

StreamText readStream(const std::string& bytes);

// "64 0E 40": bytes as hex text.
std::string hexText(const std::string& bytes);
// The reverse; blanks are skipped.
std::string bytesOf(const std::string& hex);

// Polynomial 0xEDB88320, as in zip files.
uint32_t crc32Of(const std::string& bytes);

#endif
