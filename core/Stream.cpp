#include "core/Stream.h"

int Stream::write(void*, unsigned int) { return 0; }
int Stream::skip(unsigned int count) { return read(nullptr, count); }
int Stream::rewind() { return 0; }
void Stream::flush() {}
bool Stream::isAtEnd() const { return false; }
