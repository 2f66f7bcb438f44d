#pragma once

// FAST-16 corner detection: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
