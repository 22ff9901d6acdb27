// The abstract printer: print settings, output streams, and the road of a page's pixels
// from 8-bit grey raster to the image that a concrete model sends.
// SPDX-License-Identifier: Apache-2.0
#ifndef KORVEL_PRINTER_PELLAM_PRINTER_H
#define KORVEL_PRINTER_PELLAM_PRINTER_H

#include <cups/raster.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <list>

#include "image/cximage.h"
#include "printer/halftone_type.h"

struct Settings;

// Number of the next image dump; only saveImage changes it.
extern uint64_t page_index;

// The maker's notice as PellamPrinter::getCopyRight returns it.
extern const char* const copyright;

// One object serves a whole job; its settings are written anew before every page. Setters clamp
// instead of failing, output reports nothing, nothing throws but for want of memory.
class PellamPrinter {
 public:
  struct UserData;  // opaque: a model's own

  PellamPrinter();
  PellamPrinter(const PellamPrinter&) = delete;
  PellamPrinter& operator=(const PellamPrinter&) = delete;
  virtual ~PellamPrinter();  // closes no stream

  // Sends one page: `height` rows of `bytesPerLine` bytes (a multiple of 4), a byte a pixel, of
  // which 0 is blank and anything else a dot. The model may overwrite the rows.
  virtual void doPrintImage(const unsigned char* data, size_t bytesPerLine, size_t height,
                            size_t width) = 0;

  void SetPrintWidth(int64_t dots) { printWidth_ = dots; }
  int64_t GetPrintWidth() const { return printWidth_; }
  void setPageHeader(cups_page_header2_s* header) { pageHdr_ = header; }
  cups_page_header2_s* getPageHeader() const { return pageHdr_; }
  void setAntiWrinkle(int level) { antiWrinkle_ = level; }
  int getAntiWrinkle() const { return antiWrinkle_; }
  void setUseQMDithering(bool use) { useQMDithering_ = use; }  // every page decides anew
  bool getUseQMDithering() const { return useQMDithering_; }
  void setMaxMediaWidth(int dots) { maxMediaWidth_ = dots; }
  int getMaxMediaWidth() const { return maxMediaWidth_; }
  void setVBarcodeOpt(int option) { vBarcodeOpt_ = option; }
  int getVBarcodeOpt() const { return vBarcodeOpt_; }
  void setBrightness(int step);  // -100..100
  int getBrightness() const { return brightness_; }
  void setContrast(int step);  // -100..100
  int getContrast() const { return contrast_; }
  void setPrintSpeed(const char* text);  // a number as text, 1..15
  int getPrintSpeed() const { return printSpeed_; }
  void setPrintDensity(int density);  // 0..15
  int getPrintDensity() const { return printDensity_; }
  void setHalftoneType(DitherType type) { halftoneType_ = type; }
  DitherType getHalftoneType() const { return halftoneType_; }
  void setNegativePrint(bool negative) { negativePrint_ = negative; }
  bool isNegativePrint() const { return negativePrint_; }
  void setRotate180Print(bool turned) { rotate180Print_ = turned; }
  bool isRotate180Print() const { return rotate180Print_; }
  void setMirrorPrint(bool mirrored) { mirrorPrint_ = mirrored; }
  bool isMirrorPrint() const { return mirrorPrint_; }
  void setRemoveBlankEdges(unsigned char mask) { removeBlankEdges_ = mask; }
  unsigned char getRemoveBlankEdges() const { return removeBlankEdges_; }
  void setSkipRightPixels(uint64_t pixels) { skipRightPixels_ = pixels; }
  uint64_t getSkipRightPixels() const { return skipRightPixels_; }
  void setUserData(UserData* data) { userData_ = data; }
  UserData* getUserData() const { return userData_; }

  // Streams that receive every printed byte, in this order; borrowed, at first standard output.
  std::list<FILE*>& getOutputStreams() { return outputStreams_; }
  void printBytes(const unsigned char* data, size_t length);
  void printStr(const char* text);
  void printByte(unsigned char value);
  // Returns the character count of the last stream's write.
  __attribute__((format(printf, 2, 3))) int printFormat(const char* format, ...);

  // "MFT:" and the maker's copyright notice as hexadecimal character codes.
  static const char* getCopyRight();

  // Prints one page of `height` rows of `bytesPerLine` bytes, top row first; the rows are only
  // read. Measures, dumps, processes and hands over; failures end in the log.
  void printImage(const unsigned char* data, size_t bytesPerLine, size_t height, size_t width);

  // Turns a page into its result image, `pimage`, and copies that to `dst`, which has room for
  // twice `height` rows of `stride` bytes and is never written beyond them. `dst` may be null when
  // nobody reads the copy. Returns height times the result's stride, or 0 on failure, with `pimage`
  // as it was.
  int PageProcess(DitherType type, const unsigned char* src, int stride, int width, int height,
                  unsigned char* dst);

  // Copies the indices of the image's first `width` by `height` pixels to rows of `stride` bytes.
  void copyPixels(CxImage& image, unsigned char* dst, int width, int height, int stride);

  // Copies a halftone likewise: index 1 becomes 255, and negative printing complements each byte.
  // Bytes from `capacity` on are not written.
  void copyProcessedPixels(CxImage* image, unsigned char* dst, int width, int height, int stride,
                           size_t capacity = std::numeric_limits<size_t>::max());

  // Draws the anti-wrinkle frame around the canvas of the page header's size name.
  void EnableAntiWrink(CxImage& image);

  // Packs `height` rows of `bytesPerLine` bytes to one bit a pixel, in place, leftmost pixel in
  // the top bit; any non-zero byte is a dot, rows end on a byte. Returns the packed bytes. The
  // write position never passes the read position.
  int GrayToMono(int bytesPerLine, int height, unsigned char* buffer);

  // Writes a BMP named by `bmpPathFormat_`, the time and the dump number: 8 bits per pixel as the
  // buffer lies in memory, any other depth as 1 bit per pixel, last row first. Writes nothing when
  // dumps are off, beyond 256 MiB per job, on a disk that is almost full, or over a file that
  // another job is writing.
  void saveImage(const unsigned char* data, size_t bytesPerLine, size_t height, size_t width,
                 unsigned short bitsPerPixel);

  int32_t resolution_ = 300;      // dots per inch; the job writes it before each page
  Settings* settings_ = nullptr;  // borrowed, outlives the printer; null before the first page

 protected:
  CxImage cximage_;           // the page, toned, turned, mirrored, halftoned in place
  CxImage ditheredImage_;     // the page as the stencil halftones return it
  CxImage* pimage = nullptr;  // the result: one of the two; survives a page that fails
  char bmpPathFormat_[1024] = "/var/spool/cups/tmp/prnimg_%d-%d-%d_%d_%d_%d_%ld.bmp";
  std::list<FILE*> outputStreams_;
  cups_page_header2_s* pageHdr_ = nullptr;  // borrowed, the current page's
  int32_t maxMediaWidth_ = 0;
  int64_t printWidth_ = 0;
  int32_t brightness_ = 0;
  int32_t vBarcodeOpt_ = 0;
  int32_t contrast_ = 0;
  int32_t printSpeed_ = 7;
  int32_t printDensity_ = 8;
  DitherType halftoneType_ = kHalftoneNone;
  bool negativePrint_ = false;
  bool mirrorPrint_ = false;
  bool rotate180Print_ = false;
  int32_t antiWrinkle_ = 0;  // level; 0 draws no frame
  bool useQMDithering_ = false;
  uint8_t removeBlankEdges_ = 0;  // 0x02 top, 0x08 bottom
  uint64_t skipRightPixels_ = 0;
  UserData* userData_ = nullptr;

 private:
  // Why a dump is not written; each is logged once per job.
  enum DumpRefusal { kDumpsOff, kDumpsTooLarge, kDumpBusy, kDiskAlmostFull, kDumpIncomplete };

  void dumpAndPrintResult();
  void refuseDump(DumpRefusal reason, const char* path);
  bool changesGrey() const;
  void changeGrey();
  bool halftoneForStencil(int width, int height, int stride);
  void ditherForStencil(int width, int height, int stride);
  int copyResult(int stride, int height, unsigned char* dst);

  uint64_t dumpedBytes_ = 0;
  uint32_t loggedRefusals_ = 0;  // one bit per DumpRefusal
};

#endif
