#pragma once

// Multiplier and shift per radius 0..254 (internal to the library).
extern const unsigned short kStackBlurMul[255];
extern const unsigned char kStackBlurShr[255];
