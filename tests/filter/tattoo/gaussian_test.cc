// Gaussian kernels as hex doubles, one pass of a filter, both blurs.
// Kernels went through a single-precision exponential: no library's exp gives these bits.
// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <bit>
#include <cstdio>

#include "tattoo/filters.h"
#include "tattoo/tattoo_reference.h"
#include "tests/filter/tattoo/grey_image.h"
#include "tests/filter/tattoo/whole_images.h"

namespace {

std::string hexDoubles(const std::vector<double>& values) {
  std::string text;
  for (const double value : values) {
    char line[40];
    std::snprintf(line, sizeof line, "%a\n", value);
    text += line;
  }
  return text;
}

TEST(GaussianKernel, HasTheseBitsInOneDimension) {
  struct Case {
    const char* sentence;
    int size;
    double sigma;
    std::vector<double> weights;
  };
  const std::vector<Case> cases = {
      {"the mask's kernel",
       11,
       3.0,
       {0x1.22ad1f1b33ce4p-5, 0x1.df3e7781c51fcp-5, 0x1.6186288f2511dp-4, 0x1.d2b8501df4486p-4,
        0x1.13aea7d21f0d3p-3, 0x1.236e6c602c146p-3, 0x1.13aea7d21f0d3p-3, 0x1.d2b8501df4486p-4,
        0x1.6186288f2511dp-4, 0x1.df3e7781c51fcp-5, 0x1.22ad1f1b33ce4p-5}},
      {"three taps", 3, 0.5, {0x1.b440a6af9097p-4, 0x1.92efd6541bda5p-1, 0x1.b440a6af9097p-4}},
      {"five taps",
       5,
       1.0,
       {0x1.be5f0bcf35df9p-5, 0x1.f41fd445f4fd5p-3, 0x1.9c4868c63d8afp-2, 0x1.f41fd445f4fd5p-3,
        0x1.be5f0bcf35df9p-5}},
      {"seven taps of the mask's sigma",
       7,
       3.0,
       {0x1.b35b9470d15aep-4, 0x1.1f60cbbe41b0cp-3, 0x1.537f433a3394p-3, 0x1.66e44d9e441bbp-3,
        0x1.537f433a3394p-3, 0x1.1f60cbbe41b0cp-3, 0x1.b35b9470d15aep-4}},
      {"one tap is all", 1, 3.0, {0x1p+0}},
  };
  for (const Case& c : cases) {
    std::vector<double> weights(static_cast<size_t>(c.size));
    generateGaussianKernel1D(c.size, c.sigma, weights.data());
    EXPECT_EQ(hexDoubles(weights), hexDoubles(c.weights)) << c.sentence;
  }
}

TEST(GaussianKernel, HasTheseBitsInTwoDimensions) {
  struct Case {
    const char* sentence;
    int size;
    double sigmaX, sigmaY;
    std::vector<double> weights;
  };
  const std::vector<Case> cases = {
      {"round",
       3,
       1.0,
       1.0,
       {0x1.33aa53aeef7c8p-4, 0x1.fb411e9f70bf3p-4, 0x1.33aa53aeef7c8p-4, 0x1.fb411e9f70bf3p-4,
        0x1.a2291b633f88fp-3, 0x1.fb411e9f70bf3p-4, 0x1.33aa53aeef7c8p-4, 0x1.fb411e9f70bf3p-4,
        0x1.33aa53aeef7c8p-4}},
      {"wider down than across",
       3,
       0.75,
       2.0,
       {0x1.26f1516729dc7p-4, 0x1.66b68447e3763p-3, 0x1.26f1516729dc7p-4, 0x1.4e36b8b730d0bp-4,
        0x1.96799beab489ep-3, 0x1.4e36b8b730d0bp-4, 0x1.26f1516729dc7p-4, 0x1.66b68447e3763p-3,
        0x1.26f1516729dc7p-4}},
      {"one tap is all", 1, 2.0, 3.0, {0x1p+0}},
      {"five by five",
       5,
       1.5,
       1.0,
       {0x1.accbe1347e241p-8, 0x1.a19730449dcf7p-7, 0x1.04c0f6a182bep-6,  0x1.a19730449dcf7p-7,
        0x1.accbe1347e241p-8, 0x1.e06edf19dd6d7p-6, 0x1.d3e0b8c2ab2d2p-5, 0x1.24278260e601ap-4,
        0x1.d3e0b8c2ab2d2p-5, 0x1.e06edf19dd6d7p-6, 0x1.8c0ccf03490ecp-5, 0x1.81b33976d83e5p-4,
        0x1.e1ae5cedd6dacp-4, 0x1.81b33976d83e5p-4, 0x1.8c0ccf03490ecp-5, 0x1.e06edf19dd6d7p-6,
        0x1.d3e0b8c2ab2d2p-5, 0x1.24278260e601ap-4, 0x1.d3e0b8c2ab2d2p-5, 0x1.e06edf19dd6d7p-6,
        0x1.accbe1347e241p-8, 0x1.a19730449dcf7p-7, 0x1.04c0f6a182bep-6,  0x1.a19730449dcf7p-7,
        0x1.accbe1347e241p-8}},
  };
  for (const Case& c : cases) {
    std::vector<double> weights(static_cast<size_t>(c.size * c.size));
    reference::generateGaussianKernel(c.size, c.sigmaX, c.sigmaY, weights.data());
    EXPECT_EQ(hexDoubles(weights), hexDoubles(c.weights)) << c.sentence;
  }
}

TEST(Convolution, RepeatsTheEdgeAndRoundsOnce) {
  struct Case {
    const char* sentence;
    std::vector<double> kernel;
    bool horizontal;
    int width, height;
    const char* before;
    const char* after;
  };
  const std::vector<double> smooth = {0.25, 0.5, 0.25};
  const std::vector<double> fromRight = {0.0, 0.0, 1.0};
  const std::vector<Case> cases = {
      {"one tap copies", {1.0}, true, 3, 1, "01 02 FF", "01 02 FF"},
      {"three taps along a row", smooth, true, 4, 1, "00 64 C8 64", "19 64 96 7D"},
      {"columns are left alone", smooth, true, 1, 4, "00 64 C8 64", "00 64 C8 64"},
      {"three taps down a column", smooth, false, 1, 4, "00 64 C8 64", "19 64 96 7D"},
      {"rows are left alone", smooth, false, 4, 1, "00 64 C8 64", "00 64 C8 64"},
      {"a row does not run into the next", smooth, true, 2, 2, "00 00  FF FF", "00 00  FF FF"},
      {"the last tap is the right neighbour", fromRight, true, 4, 1, "01 02 03 04", "02 03 04 04"},
      {"the last tap is the lower neighbour", fromRight, false, 2, 3, "01 02 03 04 05 06",
       "03 04 05 06 05 06"},
      {"a half is rounded up", {0.5}, true, 2, 1, "01 03", "01 02"},
      {"less than a half is not", {0.25}, true, 2, 1, "01 05", "00 01"},
      {"too much keeps its low 8 bits", {2.0}, true, 3, 1, "C8 80 7F", "90 00 FE"},
      {"too little keeps its low 8 bits", {-1.0}, true, 3, 1, "01 80 00", "FF 80 00"},
      {"five taps on two pixels",
       {0.0625, 0.25, 0.375, 0.25, 0.0625},
       true,
       2,
       1,
       "00 A0",
       "32 6E"},
  };
  for (const Case& c : cases) {
    const QMImage source = greyImage(c.width, c.height, c.before);
    const QMImage result = reference::convolve1D(source, c.kernel.data(),
                                                 static_cast<int>(c.kernel.size()), c.horizontal);
    EXPECT_EQ(pixelBytes(result), hexLine(c.after)) << c.sentence;
    EXPECT_EQ(pixelBytes(convolved(source, c.kernel, c.horizontal)), hexLine(c.after))
        << c.sentence << ": row by row";
    EXPECT_EQ(pixelBytes(source), hexLine(c.before)) << c.sentence << ": only read";
  }
}

TEST(Convolution, LeavesAColumnAsItIsWhenItRunsAcross) {
  std::vector<double> kernel(11);
  generateGaussianKernel1D(11, 3.0, kernel.data());
  const QMImage source(1, 256, QM_IMG_GRAY, everyLevel().data);
  EXPECT_EQ(pixelBytes(reference::convolve1D(source, kernel.data(), 11, true)), pixelBytes(source));
  EXPECT_EQ(pixelBytes(convolved(source, kernel, true)), pixelBytes(source)) << "row by row";
}

struct BlurCase {
  const char* sentence;
  int size;
  double sigmaX, sigmaY;
  int width, height;
  const char* before;
  const char* after;
};

TEST(GaussianBlur, RunsAcrossThenDown) {
  constexpr BlurCase kCases[] = {
      {"an edge, 11 taps", 11, 3.0, 3.0, 8, 4,
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF",
       "18 2E 4B 6D 92 B4 D1 E7  18 2E 4B 6D 92 B4 D1 E7  18 2E 4B 6D 92 B4 D1 E7  18 2E 4B 6D 92 "
       "B4 D1 E7"},
      {"an edge, 3 taps", 3, 1.0, 1.0, 8, 4,
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF",
       "00 00 00 46 B9 FF FF FF  00 00 00 46 B9 FF FF FF  00 00 00 46 B9 FF FF FF  00 00 00 46 B9 "
       "FF FF FF"},
      {"a dot, 11 taps", 11, 3.0, 3.0, 7, 5,
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF",
       "FC FC FB FB FB FC FC  FC FB FA FA FA FB FC  FC FB FA FA FA FB FC  FC FB FA FA FA FB FC  FC "
       "FC FB FB FB FC FC"},
      {"a dot, 3 taps", 3, 1.0, 1.0, 7, 5,
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF",
       "FF FF FF FF FF FF FF  FF FF EC DF EC FF FF  FF FF DF CB DF FF FF  FF FF EC DF EC FF FF  FF "
       "FF FF FF FF FF FF"},
      {"noise, 11 taps", 11, 3.0, 3.0, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "99 96 91 8E 8D 8D 8F 91 94  83 83 83 83 86 88 8A 8C 8D  6D 70 74 79 7F 84 87 89 88"},
      {"noise, 3 taps", 3, 1.0, 1.0, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "CD C2 9B 76 8F A7 75 59 89  83 74 61 5F 8A AA 87 5D 61  38 37 48 54 78 A4 AE 88 68"},
      {"a sum near a half, 11 taps", 11, 3.0, 3.0, 11, 1, "2C 61 4C 51 87 85 92 5A DD A4 F8",
       "42 4D 56 64 70 80 90 A0 B1 C3 D2"},
      {"a sum near a half, 3 taps", 3, 1.0, 1.0, 11, 1, "2C 61 4C 51 87 85 92 5A DD A4 F8",
       "3B 4D 53 5E 78 89 7F 8D A9 CB E1"},
      {"one column, 11 taps", 11, 3.0, 3.0, 1, 6, "00  32  FF  FF  0A  00",
       "3A  47  4E  4E  45  37"},
      {"one column, 3 taps", 3, 1.0, 1.0, 1, 6, "00  32  FF  FF  0A  00", "0E  5C  C7  BC  4A  03"},
      {"one pixel, 11 taps", 11, 3.0, 3.0, 1, 1, "63", "63"},
      {"one pixel, 3 taps", 3, 1.0, 1.0, 1, 1, "63", "63"},
  };
  for (const BlurCase& c : kCases) {
    const QMImage source = greyImage(c.width, c.height, c.before);
    const QMImage result = reference::enh_gaussian_filter_fast(source, c.size, c.sigmaX);
    EXPECT_EQ(pixelBytes(result), hexLine(c.after)) << c.sentence;
    std::vector<double> taps(static_cast<size_t>(c.size));
    generateGaussianKernel1D(c.size, c.sigmaX, taps.data());
    const BlurKernel kernel(taps.data(), c.size);
    EXPECT_EQ(pixelBytes(blurred(source, kernel, kernel)), hexLine(c.after))
        << c.sentence << ": row by row";
    EXPECT_EQ(pixelBytes(source), hexLine(c.before)) << c.sentence << ": only read";
  }
}

TEST(GaussianBlur, RunsOverBothDimensionsAtOnce) {
  constexpr BlurCase kCases[] = {
      {"an edge, 3 x 3 taps", 3, 1.0, 2.0, 8, 4,
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF",
       "00 00 00 46 B9 FF FF FF  00 00 00 46 B9 FF FF FF  00 00 00 46 B9 FF FF FF  00 00 00 46 B9 "
       "FF FF FF"},
      {"an edge, 5 x 5 taps", 5, 1.5, 1.0, 8, 4,
       "00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF FF FF FF  00 00 00 00 FF "
       "FF FF FF",
       "00 00 1F 5A A5 E0 FF FF  00 00 1F 5A A5 E0 FF FF  00 00 1F 5A A5 E0 FF FF  00 00 1F 5A A5 "
       "E0 FF FF"},
      {"a dot, 3 x 3 taps", 3, 1.0, 2.0, 7, 5,
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF",
       "FF FF FF FF FF FF FF  FF FF E9 DA E9 FF FF  FF FF E6 D5 E6 FF FF  FF FF E9 DA E9 FF FF  FF "
       "FF FF FF FF FF FF"},
      {"a dot, 5 x 5 taps", 5, 1.5, 1.0, 7, 5,
       "FF FF FF FF FF FF FF  FF FF FF FF FF FF FF  FF FF FF 00 FF FF FF  FF FF FF FF FF FF FF  FF "
       "FF FF FF FF FF FF",
       "FF FD FC FB FC FD FF  FF F8 F0 ED F0 F8 FF  FF F3 E7 E1 E7 F3 FF  FF F8 F0 ED F0 F8 FF  FF "
       "FD FC FB FC FD FF"},
      {"noise, 3 x 3 taps", 3, 1.0, 2.0, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "C9 BB 94 73 90 A8 74 56 82  83 78 6A 62 87 A7 8C 67 6D  3C 39 47 53 7B A5 AA 82 63"},
      {"noise, 5 x 5 taps", 5, 1.5, 1.0, 9, 3,
       "E7 EE E7 61 5E F3 5F 30 E4  9B 48 2E 15 CA E7 50 07 20  1E 12 61 7B 0F ED A7 E1 64",
       "C3 B1 98 8F 8E 87 82 7E 86  81 75 6B 75 85 8D 86 76 69  43 47 4C 62 7D 94 99 8D 71"},
      {"a sum near a half, 3 x 3 taps", 3, 1.0, 2.0, 11, 1, "2C 61 4C 51 87 85 92 5A DD A4 F8",
       "3B 4D 53 5E 78 89 7F 8D A9 CB E1"},
      {"a sum near a half, 5 x 5 taps", 5, 1.5, 1.0, 11, 1, "2C 61 4C 51 87 85 92 5A DD A4 F8",
       "3C 47 55 65 74 7D 8A 94 AB C6 E1"},
      {"one column, 3 x 3 taps", 3, 1.0, 2.0, 1, 6, "00  32  FF  FF  0A  00",
       "10  63  BE  B1  55  03"},
      {"one column, 5 x 5 taps", 5, 1.5, 1.0, 1, 6, "00  32  FF  FF  0A  00",
       "1A  60  B2  AA  50  10"},
      {"one pixel, 3 x 3 taps", 3, 1.0, 2.0, 1, 1, "63", "63"},
      {"one pixel, 5 x 5 taps", 5, 1.5, 1.0, 1, 1, "63", "63"},
  };
  for (const BlurCase& c : kCases) {
    const QMImage source = greyImage(c.width, c.height, c.before);
    const QMImage result = reference::enh_gaussian_filter(source, c.size, c.sigmaX, c.sigmaY);
    EXPECT_EQ(pixelBytes(result), hexLine(c.after)) << c.sentence;
    EXPECT_EQ(result.color, QM_IMG_GRAY) << c.sentence;
  }
}

}  // namespace
