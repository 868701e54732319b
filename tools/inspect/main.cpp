/// Tells what an MXF file holds and what is wrong with it: for people, or as JSON, and on an HTML
/// page with a drawing of the file.
///
///     inspect FILE [--json] [--html PAGE] [--validate none|lenient|standard|strict]
///     inspect --checks
///
/// Exits with 0 if there is no error, with 1 if there is one or if the file cannot be read whole, and with 2 if it was
/// called wrongly. The steps of using the library are in Inspection::read().

#include <algorithm>
#include <exception>
#include <fstream>
#include <iostream>
#include <iterator>
#include <memory>
#include <string>

#include <boost/program_options.hpp>

#include "inspect/HtmlReport.h"
#include "inspect/Inspection.h"
#include "inspect/JsonReport.h"
#include "inspect/TextReport.h"
#include "sdk/BRYX.h"
#include "shared/CommandLine.h"
#include "shared/InputFile.h"
#include "shared/OutputFile.h"
#include "shared/ProgressBar.h"

namespace {

/// @param page where to write an HTML page; empty for nowhere
ExitCode inspect(const std::string& name, BRYXValidationMode::Enum mode, bool json, const std::string& page) {
    std::ifstream file;
    if (!openInput(file, name, "inspect")) {
        return Failure;
    }
    const auto size = sizeOf(file);
    ProgressBar progress(size);
    Inspection inspection(size, progress);
    inspection.read(file, mode);
    progress.clear();
    if (json) {
        printJson(std::cout, inspection);
    } else {
        printText(std::cout, name, inspection);
    }
    if (!std::cout.flush()) {
        throw fileFailure("standard output");
    }
    if (!page.empty() && !writeHtml(page, name, file, inspection)) {
        return Failure;
    }
    const bool intact = inspection.findings.count(klvutil::FindingLevel::error) == 0 &&
                        inspection.findings.count(klvutil::FindingLevel::fatal) == 0;
    return intact ? Success : Failure;
}

/// The names of modes, by their numbers.
constexpr const char* modes[] = {"none", "lenient", "standard", "strict"};

BRYXValidationMode::Enum modeOf(const std::string& name) {
    const auto place = std::find(std::begin(modes), std::end(modes), name);
    if (place == std::end(modes)) {
        throw boost::program_options::error("the argument of --validate is none, lenient, standard or strict");
    }
    return static_cast<BRYXValidationMode::Enum>(place - std::begin(modes));
}

/// Lists the checks as tables in Markdown.
void printChecks() {
    for (const BRYXCheckGroup& group : getBRYXChecks()) {
        std::cout << "\n### " << group.subject << "\n\n| from mode | level | message | what demands it | identifier |\n"
                  << "|---|---|---|---|---|\n";
        for (const BRYXCheck* check : group.checks) {
            std::cout << "| " << modes[check->mode] << " | " << name(check->finding.level) << " | "
                      << check->finding.message << " | " << check->clause << " | `" << toString(check->finding.id)
                      << "` |\n";
        }
    }
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    po::options_description options("Tells what an MXF file holds and what is wrong with it.\n\n"
                                    "  inspect FILE [options]\n\n"
                                    "Exits with 0 if there is no error, with 1 if there is one or if the file cannot "
                                    "be read whole, and with 2 if it was called wrongly.\n\nOptions");
    options.add_options()("json", "print one JSON object")(
        "html", po::value<std::string>()->value_name("PAGE")->default_value("", ""), "write an HTML page as well")(
        "validate", po::value<std::string>()->value_name("MODE")->default_value("standard"),
        "how strictly to check the file: none, lenient, standard or strict")("checks",
                                                                             "list the checks in place of a file");
    return runProgram(argc, argv, {"inspect", options, {"file"}}, [](const po::variables_map& arguments) {
        if (arguments.count("checks") != 0) {
            printChecks();
            return Success;
        }
        if (arguments.count("file") == 0) {
            throw po::error("no file is given");
        }
        const auto page = arguments["html"].as<std::string>();
        requireFile(page, "PAGE");
        return inspect(arguments["file"].as<std::string>(), modeOf(arguments["validate"].as<std::string>()),
                       arguments.count("json") != 0, page);
    });
}
