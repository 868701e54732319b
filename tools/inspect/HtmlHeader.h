#pragma once

#include <string>

#include "inspect/HtmlSection.h"
#include "mxf/metadata/structural/MaterialPackage.h"

/// What stands above the sections: what the file is, in short.
class HtmlHeader final : public HtmlSection {
public:
    using HtmlSection::HtmlSection;

    void write(const std::string& fileName);

private:
    void fact(const char* term, const std::string& value, const std::string& detail = {});

    void writeStructureFacts();

    void writeTrackFacts();

    void writeStartTimecode(const MaterialPackage& package);

    void writeDuration(const MaterialPackage& package);

    /// "0:01:00.000", hours first.
    static std::string clockTime(double seconds);
};
