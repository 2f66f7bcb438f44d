// The portable kernels as a compiler targeting byte shuffles builds them
// (this file gets -mssse3 on x86): the code NEON targets run, measured here.
#define convert_row convert_row_shuffles
#include "image/ConvertRowsPortable.cpp"
#undef convert_row
