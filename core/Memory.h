#pragma once

// The allocators (ov_*, galloc_*): part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
