#include "gpu/GPUScript.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "core/Memory.h"
#include "core/Stream.h"

#ifndef OV_PROGRAM_CACHE_DIR
#define OV_PROGRAM_CACHE_DIR "/data/local/"
#endif

namespace {

#ifdef __ANDROID__
const char* cacheDirectory() { return "/data/local/"; }
#else
// Empty means the build default; fixed storage keeps this free of static
// constructors.
char gCacheDirectory[512] = {0};
const char* cacheDirectory() { return gCacheDirectory[0] != 0 ? gCacheDirectory : OV_PROGRAM_CACHE_DIR; }
#endif

// "<dir><name>.osb" in a galloc_malloc block the caller frees; null on failure.
char* cachePath(const char* name) {
  const char* dir = cacheDirectory();
  size_t length = strlen(dir) + strlen(name) + sizeof(".osb");
  if (length > 0xFFFFFFFFu) return nullptr;
  char* path = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length)));
  if (path == nullptr) return nullptr;
  snprintf(path, length, "%s%s.osb", dir, name);
  return path;
}

// A zero-filled copy of length + extra bytes, or null.
char* copyString(const char* text, size_t extra) {
  size_t length = strlen(text);
  if (length + extra > 0xFFFFFFFFu) return nullptr;
  char* copy = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length + extra)));
  if (copy == nullptr) return nullptr;
  memset(copy, 0, length + extra);
  memcpy(copy, text, length);
  return copy;
}

}  // namespace

// ---- GPUScriptSource ----

GPUScriptSource* GPUScriptSource::createScriptSource(const char* name, const char* source) {
  if (name == nullptr || source == nullptr || name[0] == 0 || source[0] == 0) return nullptr;
  char* nameCopy = copyString(name, 100);
  char* sourceCopy = copyString(source, 100);
  if (nameCopy == nullptr || sourceCopy == nullptr) {
    galloc_free(nameCopy);
    galloc_free(sourceCopy);
    return nullptr;
  }
  GPUScriptSource* result = new (std::nothrow) GPUScriptSource(nameCopy, sourceCopy);
  if (result == nullptr) {
    galloc_free(nameCopy);
    galloc_free(sourceCopy);
  }
  return result;
}

GPUScriptSource::GPUScriptSource(char* name, char* source) : name(name), source(source) {}

GPUScriptSource::~GPUScriptSource() {
  galloc_free(name);
  galloc_free(source);
  name = nullptr;
  source = nullptr;
}

// ---- GPUScript ----

void GPUScript::setCacheDirectory(const char* directory) {
#ifdef __ANDROID__
  (void)directory;
#else
  if (directory == nullptr) {
    gCacheDirectory[0] = 0;
    return;
  }
  size_t length = strlen(directory);
  if (length >= sizeof(gCacheDirectory)) return;
  memcpy(gCacheDirectory, directory, length + 1);
#endif
}

const char* GPUScript::getCacheDirectory() { return cacheDirectory(); }

GPUScript::GPUScript(GPUContext* context, const char* name)
    : context(context), name(nullptr), binaryFormat(0), binary(nullptr), binaryLength(0), mOptions(0) {
  if (name == nullptr) return;
  this->name = copyString(name, 1);
  if (this->name != nullptr) loadCache();
}

GPUScript::GPUScript(auto_ptr<GPUContext>& context, const char* name) : GPUScript(context.get(), name) {}

GPUScript::~GPUScript() {
  clear();
  galloc_free(name);
  name = nullptr;
  dropScriptBinary();
}

void GPUScript::loadCache() {
  char* path = cachePath(name);
  if (path == nullptr) return;
  FileStream* file = new (std::nothrow) FileStream(path, FileStream::FILE_MODE_READ);
  galloc_free(path);
  if (file == nullptr) return;
  auto_ptr<Stream> fileRef(file);
  StreamReader* reader = new (std::nothrow) StreamReader(fileRef);
  if (reader == nullptr) {
    file->close();
    return;
  }
  auto_ptr<Stream> readerRef(reader);
  unsigned length = reader->getLength();
  // A file of 4 bytes or fewer holds no binary (at most the format word).
  if (length > 4 && length - 4 <= 0x7FFFFFFFu) {
    int size = static_cast<int>(length - 4);
    void* buffer = galloc_malloc(static_cast<unsigned>(size));
    if (buffer != nullptr) {
      unsigned format = static_cast<unsigned>(reader->readInt());
      int got = reader->read(buffer, static_cast<unsigned>(size));
      if (got == size) {
        binaryFormat = format;
        binary = buffer;
        binaryLength = size;
      } else {
        galloc_free(buffer);
      }
    }
  }
  reader->close();
  file->close();
}

bool GPUScript::addSource(const char* sourceName, const char* source) {
  GPUScriptSource* created = GPUScriptSource::createScriptSource(sourceName, source);
  if (created == nullptr) return false;
  sources.push_back(auto_ptr<GPUScriptSource>(created));
  return true;
}

void GPUScript::addSource(GPUScriptSource* source) {
  if (source == nullptr) return;
  sources.push_back(auto_ptr<GPUScriptSource>(source));
}

void GPUScript::addSource(auto_ptr<GPUScriptSource>& source) { addSource(source.get()); }

auto_ptr<GPUScriptSource>& GPUScript::getScriptSourceByIndex(int index) {
  if (index < 0 || index >= static_cast<int>(sources.size())) {
    noSource = nullptr;  // a caller may have stored into the returned reference
    return noSource;
  }
  return sources[static_cast<size_t>(index)];
}

void GPUScript::remove(GPUScriptSource* source) {
  for (auto it = sources.begin(); it != sources.end(); ++it) {
    if (it->get() == source) {
      sources.erase(it);
      return;
    }
  }
}

void GPUScript::remove(auto_ptr<GPUScriptSource>& source) { remove(source.get()); }

void GPUScript::setScriptBinaryFormat(unsigned format) { binaryFormat = format; }

void GPUScript::setScriptBinary(void* newBinary, int length) {
  if (newBinary != binary) galloc_free(binary);
  binary = newBinary;
  binaryLength = length;
}

void GPUScript::dropScriptBinary() {
  galloc_free(binary);
  binary = nullptr;
  binaryLength = 0;
  binaryFormat = 0;
}

void GPUScript::clear() {
  if (name != nullptr && binary != nullptr && binaryLength > 0) {
    char* path = cachePath(name);
    if (path != nullptr) {
      FileStream* file = new (std::nothrow) FileStream(path, FileStream::FILE_MODE_WRITE);
      galloc_free(path);
      if (file != nullptr) {
        auto_ptr<Stream> fileRef(file);
        StreamWriter* writer = new (std::nothrow) StreamWriter(fileRef);
        if (writer != nullptr) {
          auto_ptr<Stream> writerRef(writer);
          writer->writeInt(static_cast<int>(binaryFormat));
          writer->write(binary, static_cast<unsigned>(binaryLength));
          writer->flush();
          writer->close();
        }
        file->close();
      }
    }
  }
  sources.clear();
}
