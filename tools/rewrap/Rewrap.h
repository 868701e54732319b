#pragma once

#include <fstream>
#include <functional>
#include <istream>
#include <memory>

#include "sdk/BRYXWriter.h"
#include "shared/ErrorPrinter.h"
#include "shared/ProgressBar.h"

struct RewrapOptions {
    BRYXWriterConfiguration configuration;
    bool keepsLayout = false;
    bool verifies = false;
};

/// Writes the file @p in again. @p in can seek, and is read twice: for what the header partition must say, and for the
/// essence.
///
/// @param create called for the file to write when it is known that there is something to write
/// @param errors told what is wrong with @p in. If that breaks off, what is whole of it is copied, and labelled open and
///     incomplete.
/// Throws std::runtime_error if @p in cannot be written again as @p options say; exceptions of the writer pass through.
void rewrap(std::istream& in, const std::function<std::shared_ptr<std::fstream>()>& create, RewrapOptions options,
            ErrorPrinter& errors, ProgressBar& progress);
