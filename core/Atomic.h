#pragma once

// The 32-bit atomics: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
