#pragma once

// The refocus module and its records: part of the C interface, declared in orvan/orvan.h.
#include "orvan/orvan.h"
