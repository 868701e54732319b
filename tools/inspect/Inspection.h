#pragma once

#include <cstdint>
#include <istream>
#include <optional>

#include "inspect/BodyCounter.h"
#include "inspect/Findings.h"
#include "inspect/GenericStreamCounter.h"
#include "inspect/IndexCollector.h"
#include "inspect/MetadataCollector.h"
#include "inspect/StructureCollector.h"
#include "sdk/BRYXReader.h"
#include "shared/ProgressBar.h"

/// What a file holds, as far as it could be read, from the handlers through which inspect learns it. Each keeps what the
/// report needs and no more: however large or damaged the file is, the memory they use stays within fixed limits.
struct Inspection {
    Inspection(std::optional<std::uint64_t> size, ProgressBar& progress) : fileSize(size), body(findings, progress) {}
    // The handlers know one another.
    Inspection(const Inspection&) = delete;
    Inspection& operator=(const Inspection&) = delete;

    /// Reads @p file from its beginning to its end.
    void read(std::istream& file, BRYXValidationMode::Enum mode);

    std::optional<std::uint64_t> fileSize; ///< none for a pipe
    FindingCollector findings;
    StructureCollector structure{findings};
    MetadataCollector metadata{structure};
    IndexCollector index{findings};
    BodyCounter body;
    GenericStreamCounter genericStreams;
    EssenceClassifier classifier;
};
