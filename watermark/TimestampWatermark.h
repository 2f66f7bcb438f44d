#pragma once

// The timestamp watermark: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
