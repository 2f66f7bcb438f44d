#include "gpu/GPUScript.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <new>

#include "core/Atomic.h"
#include "core/Memory.h"
#include "core/Stream.h"
#include "gpu/GPUStrings.h"

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

// Each temporary file gets a name of its own: the process id tells processes
// apart, the counter threads and scripts within one.
int gTemporaryCount = 0;

// "<path>.<pid>.<n>.tmp" in the same folder as path (rename only moves a file
// atomically within one file system), in a galloc_malloc block; null on
// failure.
char* temporaryPath(const char* path) {
  size_t length = strlen(path) + 48;
  if (length > 0xFFFFFFFFu) return nullptr;
  char* tmp = static_cast<char*>(galloc_malloc(static_cast<unsigned>(length)));
  if (tmp == nullptr) return nullptr;
  snprintf(tmp, length, "%s.%ld.%d.tmp", path, static_cast<long>(getpid()), atomic_inc32(&gTemporaryCount));
  return tmp;
}

// Writes the format word and the binary to a new file; false if any byte did
// not reach it.
bool writeCacheFile(const char* path, unsigned format, void* binary, int length) {
  FileStream* file = new (std::nothrow) FileStream(path, FileStream::FILE_MODE_WRITE);
  if (file == nullptr) return false;
  auto_ptr<Stream> fileRef(file);
  if (!file->isOpen()) return false;
  StreamWriter* writer = new (std::nothrow) StreamWriter(fileRef);
  bool ok = false;
  if (writer != nullptr) {
    auto_ptr<Stream> writerRef(writer);
    ok = writer->writeInt(static_cast<int>(format)) == 1 &&
         writer->write(binary, static_cast<unsigned>(length)) == length;
    writer->flush();
  }
  file->close();
  // Buffered bytes that fclose could not write out (a full disk) show here.
  struct stat written;
  return ok && stat(path, &written) == 0 && written.st_size == static_cast<off_t>(length) + 4;
}

}  // namespace

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
    : mContext(context), mName(nullptr), mBinaryFormat(0), mBinary(nullptr), mBinaryLength(0), mOptions(0) {
  if (name == nullptr) return;
  this->mName = orvan::gpu_internal::copyString(name, 1);
  if (this->mName != nullptr) loadCache();
}

GPUScript::GPUScript(auto_ptr<GPUContext>& context, const char* name) : GPUScript(context.get(), name) {}

GPUScript::~GPUScript() {
  clear();
  galloc_free(mName);
  mName = nullptr;
  dropScriptBinary();
}

bool GPUScript::readCache(Stream* stream, unsigned* format, void** binary, int* length) {
  if (format == nullptr || binary == nullptr || length == nullptr) return false;
  *format = 0;
  *binary = nullptr;
  *length = 0;
  if (stream == nullptr) return false;
  unsigned total = stream->getLength();
  // A file of 4 bytes or fewer holds no binary (at most the format word).
  if (total <= 4 || total - 4 > 0x7FFFFFFFu) return false;
  int size = static_cast<int>(total - 4);
  void* buffer = galloc_malloc(static_cast<unsigned>(size));
  if (buffer == nullptr) return false;
  // The word as StreamReader::readInt reads it; missing bytes stay 0.
  unsigned word = 0;
  stream->read(&word, sizeof(word));
  // A file cut short after its length was taken is discarded whole.
  if (stream->read(buffer, static_cast<unsigned>(size)) != size) {
    galloc_free(buffer);
    return false;
  }
  *format = word;
  *binary = buffer;
  *length = size;
  return true;
}

void GPUScript::loadCache() {
  char* path = cachePath(mName);
  if (path == nullptr) return;
  FileStream* file = new (std::nothrow) FileStream(path, FileStream::FILE_MODE_READ);
  galloc_free(path);
  if (file == nullptr) return;
  auto_ptr<Stream> fileRef(file);
  readCache(file, &mBinaryFormat, &mBinary, &mBinaryLength);
  file->close();
}

bool GPUScript::addSource(const char* sourceName, const char* source) {
  GPUScriptSource* created = GPUScriptSource::createScriptSource(sourceName, source);
  if (created == nullptr) return false;
  mSources.push_back(auto_ptr<GPUScriptSource>(created));
  return true;
}

void GPUScript::addSource(GPUScriptSource* source) {
  if (source == nullptr) return;
  mSources.push_back(auto_ptr<GPUScriptSource>(source));
}

void GPUScript::addSource(auto_ptr<GPUScriptSource>& source) { addSource(source.get()); }

auto_ptr<GPUScriptSource>& GPUScript::getScriptSourceByIndex(int index) {
  if (index < 0 || index >= static_cast<int>(mSources.size())) {
    mNoSource = nullptr;  // a caller may have stored into the returned reference
    return mNoSource;
  }
  return mSources[static_cast<size_t>(index)];
}

void GPUScript::remove(GPUScriptSource* source) {
  for (auto it = mSources.begin(); it != mSources.end(); ++it) {
    if (it->get() == source) {
      mSources.erase(it);
      return;
    }
  }
}

void GPUScript::remove(auto_ptr<GPUScriptSource>& source) { remove(source.get()); }

void GPUScript::setScriptBinaryFormat(unsigned format) { mBinaryFormat = format; }

void GPUScript::setScriptBinary(void* newBinary, int length) {
  if (newBinary != mBinary) galloc_free(mBinary);
  mBinary = newBinary;
  mBinaryLength = length;
}

void GPUScript::dropScriptBinary() {
  galloc_free(mBinary);
  mBinary = nullptr;
  mBinaryLength = 0;
  mBinaryFormat = 0;
}

void GPUScript::clear() {
  if (mName != nullptr && mBinary != nullptr && mBinaryLength > 0) {
    // Written aside and renamed into place, so that other processes and
    // scripts sharing the folder only ever see a whole file, old or new.
    char* path = cachePath(mName);
    char* tmp = path != nullptr ? temporaryPath(path) : nullptr;
    if (tmp != nullptr) {
      if (!writeCacheFile(tmp, mBinaryFormat, mBinary, mBinaryLength) || rename(tmp, path) != 0) unlink(tmp);
    }
    galloc_free(tmp);
    galloc_free(path);
  }
  mSources.clear();
}
