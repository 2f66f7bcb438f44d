// The NEON row kernel on x86 through SIMDe's translation of the intrinsics
// (the library itself has no NEON kernel there).
#include "imgproc/Fast16Neon.cpp"
