#pragma once

// The LBP pyramid functions: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
