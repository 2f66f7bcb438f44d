#pragma once

#include "watermark/TimestampWatermark.h"

namespace orvan::watermark {

// Both sets, 13 records each ("0".."9", ":", "-", " "), set 4:3 first.
constexpr int kSymbolsPerSet = 13;
extern const Symbol kTimestampSymbols[2 * kSymbolsPerSet];

}  // namespace orvan::watermark
