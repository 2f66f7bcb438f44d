#pragma once

// The time and small utility functions: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
