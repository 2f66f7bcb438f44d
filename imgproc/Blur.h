#pragma once

// The blurs and tint blends: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
