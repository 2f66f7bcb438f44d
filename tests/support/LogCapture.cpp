#include "support/LogCapture.h"

#include <android/log.h>

#include <mutex>

namespace {
std::mutex gMutex;
std::vector<LogCapture::Line>* gLines = nullptr;

void captureLogger(const struct __android_logger_data* data, const char* message) {
  std::lock_guard<std::mutex> lock(gMutex);
  if (gLines == nullptr) return;
  gLines->push_back(
      {data->priority, data->tag != nullptr ? data->tag : "", message != nullptr ? message : ""});
}

void silentLogger(const struct __android_logger_data*, const char*) {}
}  // namespace

LogCapture::LogCapture() {
  {
    std::lock_guard<std::mutex> lock(gMutex);
    delete gLines;
    gLines = new std::vector<Line>();
  }
  // Outside gMutex: liblog calls captureLogger under its own lock, which
  // then takes gMutex, so holding gMutex here would invert the order.
  __android_log_set_minimum_priority(ANDROID_LOG_VERBOSE);
  __android_log_set_logger(captureLogger);
}

LogCapture::~LogCapture() {
  __android_log_set_logger(silentLogger);
  std::lock_guard<std::mutex> lock(gMutex);
  delete gLines;
  gLines = nullptr;
}

std::vector<LogCapture::Line> LogCapture::lines() const {
  std::lock_guard<std::mutex> lock(gMutex);
  return gLines != nullptr ? *gLines : std::vector<Line>();
}

std::vector<std::string> LogCapture::texts() const {
  std::vector<std::string> out;
  for (const auto& l : lines()) out.push_back(l.text);
  return out;
}

int LogCapture::count(const std::string& text) const {
  int n = 0;
  for (const auto& l : lines()) n += l.text == text ? 1 : 0;
  return n;
}

int LogCapture::countPrefix(const std::string& prefix) const {
  int n = 0;
  for (const auto& l : lines()) n += l.text.compare(0, prefix.size(), prefix) == 0 ? 1 : 0;
  return n;
}

void LogCapture::clear() {
  std::lock_guard<std::mutex> lock(gMutex);
  if (gLines != nullptr) gLines->clear();
}
