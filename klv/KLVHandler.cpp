#include "klv/KLVHandler.h"

KLVHandler::~KLVHandler() = default;
