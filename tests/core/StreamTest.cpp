#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "core/Stream.h"

namespace {

using SO = Stream::SeekOrign;

TEST(MemoryStream, WritesAreCutAtCapacity) {
  auto_ptr<MemoryStream> s(new MemoryStream(10u));
  EXPECT_EQ(s->getLength(), 10u);
  EXPECT_EQ(s->seek(8, SO(0)), 8);
  unsigned char five[5] = {1, 2, 3, 4, 5};
  EXPECT_EQ(s->write(five, 5), 2);
  EXPECT_EQ(s->getPosition(), 10u);
  EXPECT_EQ(s->write(five, 5), 0);  // full: nothing more fits
  EXPECT_EQ(s->getBuffer()[8], 1);
  EXPECT_EQ(s->getBuffer()[9], 2);
  EXPECT_EQ(s->getLength(), 10u);
}

TEST(MemoryStream, ReadsAreCutAtCapacity) {
  unsigned char block[10];
  for (int i = 0; i < 10; ++i) block[i] = static_cast<unsigned char>(100 + i);
  MemoryStream s(block, sizeof(block));
  unsigned char out[8] = {0};
  EXPECT_EQ(s.read(out, 4), 4);
  EXPECT_EQ(out[3], 103);
  EXPECT_EQ(s.seek(7, SO(0)), 3);
  EXPECT_EQ(s.read(out, 8), 3);
  EXPECT_EQ(out[0], 107);
  EXPECT_EQ(out[2], 109);
  EXPECT_EQ(s.read(out, 8), 0);
  EXPECT_FALSE(s.isAtEnd());  // memory streams never report the end
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
  EXPECT_EQ(empty.write(b, 4), -1);
  EXPECT_EQ(empty.seek(0, SO(0)), -1);
  EXPECT_EQ(empty.rewind(), 0);
  EXPECT_EQ(empty.getLength(), 0u);
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
  EXPECT_EQ(s.seek(-2, SO(1)), -2);
  EXPECT_EQ(s.getPosition(), 5u);
  EXPECT_EQ(s.seek(20, SO(1)), 20);
  EXPECT_EQ(s.getPosition(), 10u);
  EXPECT_EQ(s.seek(3, SO(7)), 0);  // unknown origin: stay
  EXPECT_EQ(s.getPosition(), 10u);
  EXPECT_EQ(s.rewind(), 1);
  EXPECT_EQ(s.getPosition(), 0u);
}

TEST(MemoryStream, CloseForgetsTheBlockButNeverFreesACallersBlock) {
  unsigned char block[4] = {0};
  MemoryStream wrap(block, 4);
  unsigned char v[2] = {7, 8};
  EXPECT_EQ(wrap.write(v, 2), 2);
  EXPECT_EQ(block[1], 8);
  EXPECT_EQ(wrap.close(), 0);  // freeing a stack block would crash under ASan
  EXPECT_EQ(wrap.getLength(), 0u);
  EXPECT_EQ(wrap.write(v, 2), -1);

  MemoryStream own(4u);
  EXPECT_EQ(own.close(), 0);
  EXPECT_EQ(own.close(), 0);
  EXPECT_EQ(own.getBuffer(), nullptr);
}

// A fresh temporary path per test, holding `contents` unless null.
std::string tempFile(const char* contents) {
  std::string path = ::testing::TempDir() + "stream_" + std::to_string(getpid()) + "_" +
                     ::testing::UnitTest::GetInstance()->current_test_info()->name();
  std::remove(path.c_str());
  if (FILE* f = contents != nullptr ? fopen(path.c_str(), "wb") : nullptr) {
    fputs(contents, f);
    fclose(f);
  }
  return path;
}

TEST(FileStream, WriteThenReadBackWithSkipSeekRewind) {
  const std::string path = tempFile(nullptr);
  {
    FileStream w(path.c_str(), FileStream::FileMode(2));
    ASSERT_TRUE(w.isOpen());
    EXPECT_EQ(w.getLength(), 0u);
    char hello[] = "hello";
    EXPECT_EQ(w.write(hello, 5), 5);
    EXPECT_EQ(w.write(nullptr, 5), 0);
    EXPECT_EQ(w.write(hello, 0), 0);
    w.flush();
    EXPECT_EQ(w.close(), 0);
    EXPECT_EQ(w.write(hello, 5), 0);
  }
  FileStream r(path.c_str(), FileStream::FileMode(1));
  ASSERT_TRUE(r.isOpen());
  EXPECT_EQ(r.getLength(), 5u);
  char buf[16] = {0};
  EXPECT_EQ(r.read(buf, 3), 3);
  EXPECT_EQ(std::string(buf, 3), "hel");
  EXPECT_EQ(r.skip(1), 1);
  EXPECT_EQ(r.read(buf, 10), 1);
  EXPECT_EQ(buf[0], 'o');
  EXPECT_EQ(r.seek(1, SO(0)), 0);
  EXPECT_EQ(r.read(buf, 2), 2);
  EXPECT_EQ(std::string(buf, 2), "el");
  EXPECT_EQ(r.seek(-100, SO(0)), -1);
  EXPECT_EQ(r.rewind(), 1);
  EXPECT_EQ(r.read(buf, 1), 1);
  EXPECT_EQ(buf[0], 'h');
  EXPECT_EQ(r.write(buf, 1), 0);  // opened "rb"
  EXPECT_FALSE(r.isAtEnd());
  std::remove(path.c_str());
}

TEST(FileStream, ModesZeroAndThreeAndMissingFiles) {
  const std::string path = tempFile("xyz");
  char buf[4];
  FileStream none(path.c_str(), FileStream::FileMode(0));  // "b" alone
  EXPECT_FALSE(none.isOpen());
  EXPECT_EQ(none.read(buf, 3), 0);
  EXPECT_EQ(none.read(nullptr, 3), 0);
  EXPECT_EQ(none.getLength(), 0u);
  EXPECT_EQ(none.seek(1, SO(0)), 0);
  EXPECT_EQ(none.rewind(), 0);
  none.flush();
  EXPECT_FALSE(FileStream((path + ".missing").c_str(), FileStream::FileMode(1)).isOpen());
  EXPECT_FALSE(FileStream(nullptr, FileStream::FileMode(1)).isOpen());

  FileStream rw(path.c_str(), FileStream::FileMode(3));  // "rwb": reads, does not truncate
  ASSERT_TRUE(rw.isOpen());
  EXPECT_EQ(rw.getLength(), 3u);
  EXPECT_EQ(rw.read(buf, 3), 3);
  EXPECT_EQ(buf[2], 'z');
  EXPECT_EQ(rw.write(buf, 3), 0);  // the 'w' after 'r' grants no writing
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

  EXPECT_EQ(mem->seek(0, SO(0)), -9);
  StreamReader r(mem.get());
  EXPECT_EQ(r.readInt(), 0x12345678);
  EXPECT_EQ(r.readShortInt(), -2);
  EXPECT_EQ(r.readByte(), -128);
  // Only two bytes remain: the missing high bytes read as zero.
  EXPECT_EQ(r.readInt(), 0xBB2A);
  EXPECT_EQ(r.readByte(), 0);
}

TEST(StreamReaderWriter, EmptyWrappersRefuse) {
  StreamReader r(static_cast<Stream*>(nullptr));
  StreamWriter w(static_cast<Stream*>(nullptr));
  char b[2];
  EXPECT_EQ(r.read(b, 2), -1);
  EXPECT_EQ(r.getLength(), 0u);
  EXPECT_EQ(r.readInt(), 0);
  EXPECT_EQ(r.readShortInt(), 0);
  EXPECT_EQ(w.writeInt(5), 0);
  EXPECT_EQ(w.writeShortInt(5), 0);
  EXPECT_EQ(w.writeByte(5), 0);
  EXPECT_EQ(w.write(b, 2), 0);
  EXPECT_EQ(w.read(b, 2), -1);
}

}  // namespace
