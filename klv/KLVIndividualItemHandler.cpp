#include "klv/KLVIndividualItemHandler.h"

KLVIndividualItemHandler::~KLVIndividualItemHandler() = default;
