// Random call sequences on StreamReader and StreamWriter over a memory stream
// (the caller's block or one of its own) or a file stream.
#include <unistd.h>

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
  auto_ptr<StreamReader> reader(new StreamReader(base));
  auto_ptr<StreamWriter> writer(new StreamWriter(base));
  uint8_t scratch[8192];

  for (int op = 0; op < 64 && in.restSize() > 0; ++op) {
    Stream* s = in.flag() ? static_cast<Stream*>(reader.get()) : writer.get();
    const unsigned n = in.range(0, sizeof(scratch));
    switch (in.range(0, 13)) {
      case 0: {
        const int got = s->read(in.flag() ? scratch : nullptr, n);
        FUZZ_CHECK(got <= static_cast<int>(n));
        break;
      }
      case 1:
        in.tile(scratch, n);
        FUZZ_CHECK(s->write(in.flag() ? scratch : nullptr, n) <= static_cast<int>(n));
        break;
      case 2:
        s->seek(in.take<int64_t>(), static_cast<Stream::SeekOrign>(in.range(0, 3)));
        break;
      case 3:
        s->skip(in.take<uint32_t>());
        break;
      case 4:
        s->rewind();
        break;
      case 5:
        s->getLength();
        break;
      case 6:
        s->flush();
        break;
      case 7:
        s->isAtEnd();
        break;
      case 8:
        s->close();
        break;
      case 9:
        reader->readByte();
        break;
      case 10:
        reader->readShortInt();
        break;
      case 11:
        reader->readInt();
        break;
      case 12:
        FUZZ_CHECK(writer->writeShortInt(in.take<short>()) == 1);
        break;
      default:
        FUZZ_CHECK(writer->writeInt(in.take<int>()) == 1);
        break;
    }
    // A memory stream never moves past its capacity.
    if (memory != nullptr) FUZZ_CHECK(memory->getPosition() <= memory->getLength());
  }
  if (kind == 2) unlink(scratchPath().c_str());
  return 0;
}
