#include "core/RefBase.h"

RefBase::~RefBase() = default;

int RefBase::baseQuery() { return 0; }
