#include "klv/Locator.h"

Locator::~Locator() = default;
