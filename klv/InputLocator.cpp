#include "klv/InputLocator.h"

InputLocator::~InputLocator() = default;
