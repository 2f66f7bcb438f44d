#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/Memory.h"
#include "supercapture/SuperCaptureFrame.h"
#include "supercapture/SuperCaptureScheme.h"
#include "support/LogCapture.h"

namespace {

using Bytes = std::vector<unsigned char>;

auto_ptr<SuperCaptureFrame> frameOf(Bytes& pixels, unsigned w, unsigned h) {
  unsigned char* planes[4] = {pixels.data(), nullptr, nullptr, nullptr};
  return auto_ptr<SuperCaptureFrame>(SuperCaptureFrame::createFrame(1, w, h, 1, planes));
}

Bytes readBack(const auto_ptr<SuperCaptureFrame>& f) {
  return Bytes(f->planes[0], f->planes[0] + f->width * f->height * 2);
}

// Merges `frames` through a scheme and returns the bytes written into a
// carrier frame that starts filled with `carrierFill`.
template <typename Scheme>
Bytes merge(std::vector<Bytes> frames, unsigned w, unsigned h, unsigned char carrierFill = 0x5A) {
  auto_ptr<Scheme> s(new Scheme());
  s->init(w, h, 1);
  for (auto& f : frames) {
    auto_ptr<SuperCaptureFrame> frame = frameOf(f, w, h);
    s->process(frame);
  }
  Bytes fill(w * h * 2, carrierFill);
  auto_ptr<SuperCaptureFrame> carrier = frameOf(fill, w, h);
  s->getResult(carrier);
  return readBack(carrier);
}

TEST(SuperCaptureScheme, MeanIsExactWhenTheSumIsAMultipleOfTheCount) {
  // 49 identical frames sum to exactly 49 x k, a case where a quotient
  // rounded the wrong way (49 x k x fl(1 / 49) < k) would give k - 1.
  // 16 bytes: one full vector step.
  const Bytes k = {1, 2, 3, 4, 6, 7, 8, 12, 13, 16, 23, 30, 100, 128, 254, 255};
  std::vector<Bytes> burst(49, k);
  EXPECT_EQ(merge<SuperCaptureHighLightScheme>(burst, 8, 1), k);
  // One byte one short of a multiple truncates down.
  burst[0][15] = 254;
  EXPECT_EQ(merge<SuperCaptureHighLightScheme>(burst, 8, 1)[15], 254);
}

TEST(SuperCaptureScheme, LogLinesCarryTheCountBeforeIncrement) {
  LogCapture cap;
  std::vector<Bytes> burst(3, Bytes(8, 1));
  merge<SuperCaptureLowLightScheme>(burst, 2, 2);
  merge<SuperCaptureHighLightScheme>(burst, 2, 2);
  const std::string low = "SuperCaptureLowLightScheme::process ............................m_Count:",
                    high = "SuperCaptureHighLightScheme::process ............................ m_Count:";
  for (std::string c : {"0\n", "1\n", "2\n"}) {
    EXPECT_EQ(cap.count(low + c), 1) << c;
    EXPECT_EQ(cap.count(high + c), 1) << c;
  }
  EXPECT_EQ(cap.count("SuperCaptureLowLightScheme::getResult ............................ m_Count:3\n"), 1);
  EXPECT_EQ(cap.count("SuperCaptureHighLightScheme::getResult ............................ m_Count:3\n"), 1);
  EXPECT_EQ(cap.lines().size(), 8u);
  for (const auto& l : cap.lines()) EXPECT_TRUE(l.priority == 3 && l.tag == "@@@") << l.text;
}

template <typename Scheme>
void expectRefusedInit(unsigned w, unsigned h, unsigned format) {
  LogCapture cap;
  auto_ptr<Scheme> s(new Scheme());
  s->init(w, h, format);
  EXPECT_EQ(s->getAccumulator(), nullptr) << w << "x" << h << " format " << format;
  Bytes px(32, 9);
  auto_ptr<SuperCaptureFrame> f = frameOf(px, 4, 4);
  s->process(f);
  s->getResult(f);
  EXPECT_EQ(s->getCount(), 0u);
  EXPECT_EQ(cap.lines().size(), 0u);  // refused calls log nothing
  EXPECT_EQ(readBack(f), px);
}

TEST(SuperCaptureScheme, InitRefusesBadFormatsSizesAndOverflow) {
  // Then accumulator bytes W x H x 8 = 2^32 (the frame alone would fit),
  // frame bytes W x H x 2 = 2^32, the largest sizes, and 2^65 (0 mod 2^64).
  const unsigned bad[][3] = {{640, 480, 2},    {0, 480, 1},       {640, 0, 1},   {640, 480, 0},
                             {65536, 8192, 1}, {65536, 32768, 1}, {~0u, ~0u, 1}, {1u << 31, 1u << 31, 1}};
  for (const auto& b : bad) {
    expectRefusedInit<SuperCaptureLowLightScheme>(b[0], b[1], b[2]);
    expectRefusedInit<SuperCaptureHighLightScheme>(b[0], b[1], b[2]);
  }
}

TEST(SuperCaptureScheme, EmptyHighLightResultWritesNothing) {
  // High light without frames: nothing to divide by, nothing written.
  auto_ptr<SuperCaptureHighLightScheme> high(new SuperCaptureHighLightScheme());
  high->init(2, 2, 1);
  Bytes px(8, 77);
  auto_ptr<SuperCaptureFrame> f = frameOf(px, 2, 2);
  high->getResult(f);
  EXPECT_EQ(readBack(f), px);
}

TEST(SuperCaptureFrame, CreateCopiesPlaneZeroAndRefusesBadArguments) {
  Bytes px = {1, 2, 3, 4, 5, 6, 7, 8};
  unsigned char other = 0;
  unsigned char* planes[4] = {px.data(), &other, &other, &other};
  auto_ptr<SuperCaptureFrame> f(SuperCaptureFrame::createFrame(9, 2, 2, 1, planes));
  ASSERT_NE(f.get(), nullptr);
  EXPECT_EQ(f->planes[1], nullptr);
  px[0] = 99;  // a copy, not a view
  EXPECT_EQ(readBack(f), (Bytes{1, 2, 3, 4, 5, 6, 7, 8}));
  // Format other than 1, no planes, 2^32 frame bytes.
  EXPECT_EQ(SuperCaptureFrame::createFrame(1, 2, 2, 2, planes), nullptr);
  EXPECT_EQ(SuperCaptureFrame::createFrame(1, 2, 2, 1, nullptr), nullptr);
  EXPECT_EQ(SuperCaptureFrame::createFrame(1, 65536, 32768, 1, planes), nullptr);
}

}  // namespace
