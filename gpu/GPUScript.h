#pragma once

#include <vector>

#include "core/Export.h"
#include "core/RefBase.h"
#include "core/Stream.h"
#include "gpu/GPUContext.h"
#include "gpu/GPUScriptSource.h"

// A named set of shader sources plus an optional program binary. A named
// script reads its binary from the cache file <dir><name>.osb when it is
// constructed and writes it back in clear() (and so at destruction). The
// directory is "/data/local/" on Android; host builds use the build's
// OV_PROGRAM_CACHE_DIR unless setCacheDirectory changed it.
class OV_EXPORT GPUScript : public RefBase {
 public:
  // Options GPUProgram honours when it builds a program from this script.
  // Neither is on by default.
  enum ProgramOption {
    // A cached binary that glProgramBinary rejects is dropped and the program
    // is compiled from the sources instead of staying 0.
    OPTION_RECOMPILE_REJECTED_BINARY = 1,
    // A program compiled from sources stores its binary into the script, so
    // that the next clear() writes the cache file.
    OPTION_STORE_COMPILED_BINARY = 2,
  };

  GPUScript(GPUContext* context, const char* name);
  GPUScript(auto_ptr<GPUContext>& context, const char* name);
  ~GPUScript() override;

  bool addSource(const char* name, const char* source);
  void addSource(GPUScriptSource* source);
  void addSource(auto_ptr<GPUScriptSource>& source);
  // The entry at index, or an empty pointer when index is out of range.
  auto_ptr<GPUScriptSource>& getScriptSourceByIndex(int index);
  int getSourceCount() const { return static_cast<int>(mSources.size()); }
  void remove(GPUScriptSource* source);
  void remove(auto_ptr<GPUScriptSource>& source);

  void setScriptBinaryFormat(unsigned format);
  // The script takes the buffer (a galloc_malloc block) and frees it later;
  // a previous buffer is freed.
  void setScriptBinary(void* binary, int length);
  unsigned getScriptBinaryFormat() const { return mBinaryFormat; }
  void* getScriptBinary() const { return mBinary; }
  int getScriptBinaryLength() const { return mBinaryLength; }
  // Forgets and frees the binary (so clear() writes nothing).
  void dropScriptBinary();

  // Writes the cache file if the script has a name and a binary, then drops
  // every source. The binary is kept.
  void clear();

  const char* getName() const { return mName; }
  void setOptions(unsigned options) { mOptions = options; }
  unsigned getOptions() const { return mOptions; }
  GPUContext* getContext() const { return mContext.get(); }

  // Host builds only: replaces the cache directory (a path ending in '/', at
  // most 511 bytes; null restores the build default). Not thread-safe: call it
  // before any script is made. Android builds ignore it.
  static void setCacheDirectory(const char* directory);
  static const char* getCacheDirectory();

  // Parses the contents of a cache file: a 32-bit format word, then the
  // program binary (the rest of the stream). On success *binary is a
  // galloc_malloc block the caller owns. False, with the outputs zeroed, for a
  // stream of 4 bytes or fewer or one that ends early. Needs no GL context;
  // takes no reference on the stream (a MemoryStream on the stack will do).
  static bool readCache(Stream* stream, unsigned* format, void** binary, int* length);

 private:
  void loadCache();

  auto_ptr<GPUContext> mContext;
  char* mName;
  std::vector<auto_ptr<GPUScriptSource>> mSources;
  auto_ptr<GPUScriptSource> mNoSource;
  unsigned mBinaryFormat;
  void* mBinary;
  int mBinaryLength;
  unsigned mOptions;
};
