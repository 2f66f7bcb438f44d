#pragma once

#include "core/Export.h"
#include "core/RefBase.h"

// One named shader text. Index 0 of a script is the vertex shader, index 1
// the fragment shader; the name is a label only.
class OV_EXPORT GPUScriptSource : public RefBase {
 public:
  // Copies both strings; null if either is null or empty or memory runs out.
  static GPUScriptSource* createScriptSource(const char* name, const char* source);
  // Takes ownership of two galloc_malloc buffers.
  GPUScriptSource(char* name, char* source);
  ~GPUScriptSource() override;

  const char* getName() const { return mName; }
  const char* getSource() const { return mSource; }

 private:
  char* mName;
  char* mSource;
};
