#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "core/Stream.h"

namespace {

using SO = Stream::SeekOrign;

TEST(MemoryStream, ReadsAndWritesAreCutAtCapacity) {
  auto_ptr<MemoryStream> s(new MemoryStream(10u));
  EXPECT_EQ(s->seek(8, SO(0)), 8);
  unsigned char five[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(s->write(five, 5), 2);
  EXPECT_EQ(s->getPosition(), 10u);
  EXPECT_EQ(s->write(five, 5), 0);  // full: nothing more fits, the stream never grows
  EXPECT_EQ(s->getLength(), 10u);
  EXPECT_EQ(s->seek(8, SO(0)), -2);
  unsigned char out[8] = {0};
  EXPECT_EQ(s->read(out, 8), 2);
  EXPECT_EQ(std::string(out, out + 2), "\x01\x02");
  EXPECT_EQ(s->read(out, 8), 0);
  EXPECT_FALSE(s->isAtEnd());  // memory streams never report the end
}

TEST(MemoryStream, BadArgumentsGiveMinusOne) {
  unsigned char b[4];
  MemoryStream s(8u);
  EXPECT_EQ(s.read(nullptr, 4), -1);
  EXPECT_EQ(s.read(b, 0), -1);
  EXPECT_EQ(s.write(nullptr, 4), -1);
  EXPECT_EQ(s.write(b, 0), -1);
  EXPECT_EQ(s.skip(3), -1);  // skipping is a read into no buffer
  EXPECT_EQ(s.getPosition(), 0u);
  MemoryStream empty(nullptr, 16);
  EXPECT_EQ(empty.read(b, 4), -1);
  EXPECT_EQ(empty.seek(0, SO(0)), -1);
  // A wrapped block is never freed (a stack block would trip ASan).
  MemoryStream wrap(b, 4);
  EXPECT_EQ(wrap.close(), 0);
  EXPECT_EQ(wrap.write(b, 2), -1);
  // Counts that an int cannot return are refused before any byte moves.
  unsigned char src[4] = {1, 2, 3, 4}, dst[4] = {9, 9, 9, 9};
  MemoryStream huge(src, 0xFFFFFFFFu);
  EXPECT_EQ(huge.read(dst, 0x80000000u), -1);
  EXPECT_EQ(huge.write(dst, 0x80000000u), -1);
  EXPECT_EQ(std::string(dst, dst + 4) + std::string(src, src + 4), "\x09\x09\x09\x09\x01\x02\x03\x04");
  EXPECT_EQ(huge.getPosition(), 0u);
}

TEST(MemoryStream, SeekClampsAndReportsTheUnclampedMove) {
  MemoryStream s(10u);
  EXPECT_EQ(s.seek(4, SO(0)), 4);
  EXPECT_EQ(s.seek(-5, SO(0)), -5 - 4);
  EXPECT_EQ(s.getPosition(), 0u);
  s.seek(4, SO(0));
  // Origin 2 counts from the current position, not from the end.
  EXPECT_EQ(s.seek(3, SO(2)), 3);
  EXPECT_EQ(s.getPosition(), 7u);
  EXPECT_EQ(s.seek(20, SO(1)), 20);
  EXPECT_EQ(s.getPosition(), 10u);
  EXPECT_EQ(s.seek(3, SO(7)), 0);  // unknown origin: stay
  EXPECT_EQ(s.rewind(), 1);
  EXPECT_EQ(s.getPosition(), 0u);
}

TEST(FileStream, WriteThenReadBackAndModeZero) {
  const std::string path = ::testing::TempDir() + "stream_" + std::to_string(getpid());
  {
    FileStream w(path.c_str(), FileStream::FileMode(2));
    ASSERT_TRUE(w.isOpen());
    char hello[] = "hello";
    EXPECT_EQ(w.write(hello, 5), 5);
    EXPECT_EQ(w.write(nullptr, 5), 0);
    EXPECT_EQ(w.write(hello, 0x80000000u), 0);  // a count an int cannot return
    EXPECT_EQ(w.close(), 0);
    EXPECT_EQ(w.write(hello, 5), 0);
  }
  FileStream r(path.c_str(), FileStream::FileMode(1));
  EXPECT_EQ(r.getLength(), 5u);
  char buf[16] = {0};
  EXPECT_EQ(r.skip(0x80000000u), 0);
  EXPECT_EQ(r.read(buf, 3), 3);
  EXPECT_EQ(r.skip(1), 1);
  EXPECT_EQ(r.read(buf + 3, 10), 1);
  EXPECT_EQ(std::string(buf, 4), "helo");
  EXPECT_EQ(r.seek(1, SO(0)), 0);
  EXPECT_EQ(r.read(buf, 2), 2);
  EXPECT_EQ(std::string(buf, 2), "el");
  EXPECT_EQ(r.seek(-100, SO(0)), -1);
  EXPECT_EQ(r.rewind(), 1);
  EXPECT_EQ(r.write(buf, 1), 0);  // opened "rb"
  // Mode 0 opens "b", which fopen refuses: every read gives 0, length 0.
  FileStream none(path.c_str(), FileStream::FileMode(0));
  EXPECT_FALSE(none.isOpen());
  EXPECT_EQ(none.read(buf, 3), 0);
  EXPECT_EQ(none.getLength(), 0u);
  EXPECT_EQ(none.rewind(), 0);
  std::remove(path.c_str());
}

TEST(StreamReaderWriter, LittleEndianBytesAndShortReads) {
  auto_ptr<Stream> mem(new MemoryStream(9u));
  StreamWriter w(mem);
  EXPECT_EQ(w.writeInt(0x12345678), 1);
  EXPECT_EQ(w.writeShortInt(-2), 1);
  EXPECT_EQ(w.writeByte(-128), 1);
  EXPECT_EQ(w.writeByte(0x2A), 1);
  EXPECT_EQ(w.writeByte(-69), 1);
  const unsigned char* bytes = static_cast<MemoryStream*>(mem.get())->getBuffer();
  EXPECT_EQ(std::string(bytes, bytes + 9), "\x78\x56\x34\x12\xFE\xFF\x80\x2A\xBB");
  mem->rewind();
  StreamReader r(mem.get());
  EXPECT_EQ(r.readInt(), 0x12345678);
  EXPECT_EQ(r.readShortInt(), -2);
  EXPECT_EQ(r.readByte(), -128);
  // Only two bytes remain: the missing high bytes read as zero.
  EXPECT_EQ(r.readInt(), 0xBB2A);
  StreamReader empty(static_cast<Stream*>(nullptr));
  EXPECT_EQ(empty.readInt(), 0);
  EXPECT_EQ(StreamWriter(static_cast<Stream*>(nullptr)).writeInt(5), 0);
}

}  // namespace
