// Random call sequences on StreamReader and StreamWriter over a memory stream
// (the caller's block or one of its own) or a file stream. Memory streams are
// checked against a model of their documented position rules.
#include <unistd.h>

#include <climits>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "../FuzzInput.h"
#include "core/Stream.h"

namespace {

const std::string& scratchPath() {
  static const std::string path = "/tmp/ov-fuzz-stream-" + std::to_string(getpid());
  return path;
}

// What a memory stream must answer, in exact arithmetic.
struct Model {
  bool open;
  long long capacity;
  long long position;

  int transfer(bool buffer, long long n) {
    if (!open || !buffer || n == 0) return -1;
    const long long count = n < capacity - position ? n : capacity - position;
    position += count;
    return static_cast<int>(count);
  }
  long long seek(long long offset, int origin) {
    if (!open) return -1;
    const __int128 old = position;
    const __int128 target = origin == 0 ? __int128{offset} : origin <= 2 ? old + offset : old;
    position = static_cast<long long>(target < 0 ? 0 : target > capacity ? capacity : target);
    const __int128 moved = target - old;
    return moved < LLONG_MIN ? LLONG_MIN : static_cast<long long>(moved);
  }
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const unsigned kind = in.range(0, 2);
  const unsigned capacity = in.range(0, 4096);
  std::vector<uint8_t> block(capacity);
  in.tile(block.data(), block.size());

  auto_ptr<Stream> base;
  MemoryStream* memory = nullptr;
  if (kind == 0) {
    memory = new MemoryStream(capacity > 0 ? block.data() : nullptr, capacity);
    base = memory;
  } else if (kind == 1) {
    memory = new MemoryStream(capacity);
    base = memory;
  } else {
    FILE* f = fopen(scratchPath().c_str(), "wb");
    if (f == nullptr) return 0;
    fwrite(block.data(), 1, block.size(), f);
    fclose(f);
    const auto mode = static_cast<FileStream::FileMode>(in.range(0, 3));
    base = new FileStream(scratchPath().c_str(), mode);
  }
  Model model{memory != nullptr && memory->getBuffer() != nullptr, capacity, 0};
  if (!model.open) model.capacity = 0;
  auto_ptr<StreamReader> reader(new StreamReader(base));
  auto_ptr<StreamWriter> writer(new StreamWriter(base));
  uint8_t scratch[8192];

  for (int op = 0; op < 64 && in.restSize() > 0; ++op) {
    Stream* s = in.flag() ? static_cast<Stream*>(reader.get()) : writer.get();
    const unsigned n = in.range(0, sizeof(scratch));
    // The model's answer for the step; steps without one leave both at 0.
    long long expected = 0;
    long long got = 0;
    switch (in.range(0, 13)) {
      case 0: {
        const bool buffer = in.flag();
        got = s->read(buffer ? scratch : nullptr, n);
        expected = model.transfer(buffer, n);
        break;
      }
      case 1: {
        in.tile(scratch, n);
        const bool buffer = in.flag();
        got = s->write(buffer ? scratch : nullptr, n);
        expected = model.transfer(buffer, n);
        break;
      }
      case 2: {
        const auto offset = in.take<int64_t>();
        const auto origin = static_cast<int>(in.range(0, 3));
        got = s->seek(offset, static_cast<Stream::SeekOrign>(origin));
        expected = model.seek(offset, origin);
        break;
      }
      case 3:
        // Skipping reads into no buffer, which a memory stream refuses.
        got = s->skip(in.take<uint32_t>());
        expected = -1;
        break;
      case 4:
        // Neither wrapper passes rewind on.
        got = s->rewind();
        expected = 0;
        break;
      case 5:
        got = s->getLength();
        expected = model.capacity;
        break;
      case 6:
        s->flush();
        break;
      case 7:
        FUZZ_CHECK(!s->isAtEnd());
        break;
      case 8:
        s->close();
        model = Model{false, 0, 0};
        break;
      case 9:
        reader->readByte();
        model.transfer(true, 1);
        break;
      case 10:
        reader->readShortInt();
        model.transfer(true, 2);
        break;
      case 11:
        reader->readInt();
        model.transfer(true, 4);
        break;
      case 12:
        FUZZ_CHECK(writer->writeShortInt(in.take<short>()) == 1);
        model.transfer(true, 2);
        break;
      default:
        FUZZ_CHECK(writer->writeInt(in.take<int>()) == 1);
        model.transfer(true, 4);
        break;
    }
    if (memory == nullptr) continue;
    FUZZ_CHECK(got == expected);
    FUZZ_CHECK(memory->getPosition() == model.position);
  }
  if (kind == 2) unlink(scratchPath().c_str());
  return 0;
}
