/// Writes the essence of one track of an MXF file, octet for octet, to a file or to standard output.
///
///     extract FILE KEY|TRACKNUMBER[@BODYSID] OUT

#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <stdexcept>
#include <string>
#include <system_error>

#include <boost/program_options/errors.hpp>

#include "extract/Extractor.h"
#include "extract/Output.h"
#include "extract/Selection.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "sdk/BRYXEssenceSplitter.h"
#include "shared/CommandLine.h"
#include "shared/ErrorPrinter.h"
#include "shared/FileEnd.h"
#include "shared/InputFile.h"
#include "shared/PackageCounter.h"

namespace {

/// Takes as essence what a Generic Container has, and what is selected, whatever it is.
class Classifier final : public BRYXGCEssenceKeyClassifier {
public:
    explicit Classifier(const Selection& selection) : selection_(selection) {}

    MXFGCEssenceKind classify(const KLVKey& key) const override {
        const MXFGCEssenceKind kind = mxfutil::gcEssenceKind(key);
        return kind == MXFGCEssenceKind::None && selection_.includes(key) ? MXFGCEssenceKind::Data : kind;
    }

private:
    const Selection& selection_;
};

ExitCode extract(std::istream& file, const Selection& selection, Output& out) {
    ProgressBar progress(sizeOf(file));
    ErrorPrinter errors("extract", progress);
    Extractor extractor(selection, out, progress, errors);
    const Classifier classifier(selection);
    PackageCounter packages;
    BRYXEssenceSplitter splitter(&packages, nullptr, &extractor);
    splitter.setEssenceKeyClassifier(&classifier);
    MXFReader reader;
    reader.setStructureHandler(&extractor);
    reader.setBodyHandler(&splitter);
    reader.setGenericStreamHandler(&splitter);
    reader.setErrorHandler(&errors);
    std::string problem;
    try {
        reader.read(file);
        if (extractor.elements() == 0) {
            problem = "there is no such element";
        } else {
            out.finish();
        }
    } catch (const klvutil::parse_error& error) {
        errors.readingEnded(error, describeEnd(error, file, packages.element(), packages.wholePackages()));
    } catch (const std::exception& error) {
        problem = error.what();
    }
    errors.finish();
    if (extractor.otherContainer() && !selection.bodySID()) {
        const std::string container = std::to_string(*extractor.otherContainer());
        errors.remark("such elements of essence container " + container + " are left out; add @" + container +
                      " to have those");
    }
    if (!problem.empty()) {
        errors.error(problem);
    }
    progress.clear();
    return errors.errors() == 0 ? Success : Failure;
}

Selection selectionOf(const std::string& text) {
    try {
        return Selection(text);
    } catch (const std::logic_error&) {
        throw boost::program_options::error(text + " is neither a key nor a track number");
    }
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    const po::options_description options(
        "Writes the essence of one track of an MXF file, octet for octet, to a file or to standard output.\n\n"
        "  extract FILE KEY|TRACKNUMBER[@BODYSID] OUT\n\n"
        "KEY is the key of the elements as inspect prints it, TRACKNUMBER its last four octets as a number: what the "
        "track in the header metadata has. BODYSID names the essence container; without it, the first one that has "
        "such an element is meant. OUT is \"-\" for standard output.\n\n"
        "Exits with 0 if there was any essence and no error, else with 1, or with 2 if it was called wrongly.\n\n"
        "Options");
    return runProgram(argc, argv, {"extract", options, {"file", "track", "out"}}, [](const po::variables_map& given) {
        if (given.count("out") == 0) {
            throw po::error("a file, a track and where to write it are needed");
        }
        const auto in = given["file"].as<std::string>();
        const auto name = given["out"].as<std::string>();
        const Selection selection = selectionOf(given["track"].as<std::string>());
        std::ifstream file;
        if (!openInput(file, in, "extract")) {
            return Failure;
        }
        std::error_code unknown;
        if (std::filesystem::equivalent(in, name, unknown)) {
            throw std::runtime_error(name + " is what is read");
        }
        Output out(name);
        return extract(file, selection, out);
    });
}
