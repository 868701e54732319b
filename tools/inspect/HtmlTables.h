#pragma once

#include <string>

#include "inspect/HtmlSection.h"

/// Findings, partitions, essence and index as tables.
class HtmlTables final : public HtmlSection {
public:
    using HtmlSection::HtmlSection;

    void writeFindings();

    void writePartitions();

    void writeEssence();

    void writeIndex();

private:
    void writeLabels();

    static std::string nameOf(const KLVKey& label);

    /// What the file descriptors say in short.
    void writeDescriptors();
};
