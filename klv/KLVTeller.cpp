#include "klv/KLVTeller.h"

KLVTeller::~KLVTeller() = default;
