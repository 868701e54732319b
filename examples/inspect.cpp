/// Tells what an MXF file holds and what is wrong with it: for people, or as JSON, and on an HTML
/// page with a drawing of the file.
///
///     inspect FILE [--json] [--html PAGE]
///
/// Exits with 0 if there is no error, with 1 if there is one or if the file cannot be read whole, and with 2 if it was
/// called wrongly. The steps of using the library are in inspectFile(), the handlers it needs in Inspection.h.

#include <cstdint>
#include <exception>
#include <fstream>
#include <iostream>
#include <optional>
#include <string>

#include <boost/program_options.hpp>

#include "InputFile.h"
#include "Inspection.h"
#include "InspectionHtml.h"
#include "InspectionJson.h"
#include "InspectionText.h"
#include "ProgressBar.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"

namespace {

enum ExitCode { Success = 0, Failure = 1, BadUsage = 2 };

/// Reads @p file from its beginning to its end.
void inspectFile(std::istream& file, Inspection& inspection) {
    MXFReader reader;
    reader.setStructureHandler(&inspection.structure);
    reader.setHeaderMetadataHandler(&inspection.metadata.handler());
    reader.setIndexHandler(&inspection.index.handler());
    reader.setBodyHandler(&inspection.body);
    reader.setGenericStreamHandler(&inspection.body);
    reader.setErrorHandler(&inspection.findings);
    try {
        // The reader takes a stream without octets for no file at all, and calls no handler.
        if (file.peek() == std::istream::traits_type::eof() && !file.bad()) {
            inspection.findings.readingEnded(findings::emptyFile);
        } else {
            reader.read(file);
        }
    } catch (const klvutil::parse_error& error) {
        // What was read up to here has reached the handlers, so that there is something to show.
        inspection.metadata.readingEnded();
        inspection.findings.readingEnded(error);
    } catch (const std::exception& error) {
        inspection.metadata.readingEnded();
        inspection.findings.readingEnded(findings::readingFailed, error.what());
    }
}

/// @param page where to write an HTML page; empty for nowhere
ExitCode inspect(const std::string& name, bool json, const std::string& page) {
    std::ifstream file;
    if (!openInput(file, name, "inspect")) {
        return Failure;
    }
    const auto size = sizeOf(file);
    ProgressBar progress(size);
    Inspection inspection(size, progress);
    inspectFile(file, inspection);
    progress.clear();
    if (json) {
        printJson(std::cout, inspection);
    } else {
        printText(std::cout, name, inspection);
    }
    if (!std::cout.flush()) {
        std::cerr << "inspect: the report could not be written\n";
        return Failure;
    }
    if (!page.empty() && !writeHtml(page, name, file, inspection)) {
        return Failure;
    }
    const bool intact = inspection.findings.count(klvutil::FindingLevel::error) == 0 &&
                        inspection.findings.count(klvutil::FindingLevel::fatal) == 0;
    return intact ? Success : Failure;
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    po::options_description options("Tells what an MXF file holds and what is wrong with it.\n\n"
                                    "  inspect FILE [options]\n\n"
                                    "Exits with 0 if there is no error, with 1 if there is one or if the file cannot "
                                    "be read whole, and with 2 if it was called wrongly.\n\nOptions");
    options.add_options()("json", "print one JSON object")(
        "html", po::value<std::string>()->value_name("PAGE")->default_value("", ""),
        "write an HTML page as well")("help", "print this text");
    po::options_description all;
    all.add(options).add_options()("file", po::value<std::string>());
    po::positional_options_description positional;
    positional.add("file", 1);
    try {
        po::variables_map arguments;
        po::store(po::command_line_parser(argc, argv).options(all).positional(positional).run(), arguments);
        if (arguments.count("help") != 0) {
            std::cout << options;
            return Success;
        }
        if (arguments.count("file") == 0) {
            throw po::error("no file is given");
        }
        return inspect(arguments["file"].as<std::string>(), arguments.count("json") != 0,
                       arguments["html"].as<std::string>());
    } catch (const po::error& error) {
        std::cerr << "inspect: " << error.what() << "\nTry inspect --help.\n";
        return BadUsage;
    }
}
