#include "klv/ErrorHandler.h"

ErrorHandler::~ErrorHandler() = default;
