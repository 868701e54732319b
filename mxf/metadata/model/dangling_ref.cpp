#include "mxf/metadata/model/dangling_ref.h"

dangling_ref_base::~dangling_ref_base() = default;
