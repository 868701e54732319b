#include "klv/KLVReader.h"

KLVReader::~KLVReader() = default;
