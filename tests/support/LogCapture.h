#pragma once

#include <string>
#include <vector>

// Captures every line the library sends to the Android log while it lives
// (one capture at a time per process).
class LogCapture {
 public:
  LogCapture();
  ~LogCapture();
  LogCapture(const LogCapture&) = delete;
  LogCapture& operator=(const LogCapture&) = delete;

  struct Line {
    int priority;
    std::string tag;
    std::string text;
  };

  std::vector<Line> lines() const;
  std::vector<std::string> texts() const;
  // Number of captured lines whose text equals `text` exactly.
  int count(const std::string& text) const;
  // Number of captured lines whose text starts with `prefix`.
  int countPrefix(const std::string& prefix) const;
  bool contains(const std::string& text) const { return count(text) > 0; }
  void clear();
};
