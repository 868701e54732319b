#include "inspect/Inspection.h"

#include <exception>
#include <memory>

#include "klv/parse_error.h"
#include "shared/FileEnd.h"

namespace {

/// The inspection outlives the reader, which holds its handlers by shared pointers: these own nothing.
template <class Handler>
std::shared_ptr<Handler> unowned(Handler& handler) {
    return {std::shared_ptr<void>(), &handler};
}

} // namespace

void Inspection::read(std::istream& file, BRYXValidationMode::Enum mode) {
    const auto reader = createBRYXReader(unowned(file), mode);
    reader->setEssenceKeyClassifier(unowned(classifier));
    reader->setStructureHandler(unowned(structure));
    reader->setMetadataHandler(unowned(metadata));
    reader->setIndexHandler(unowned(index));
    reader->setGCStructureHandler(unowned(body));
    reader->setSDTICPSystemHandler(unowned(body));
    reader->setPDProxySystemHandler(unowned(body));
    reader->setEssenceHandler(unowned(body));
    reader->setGenericStreamHandler(unowned(genericStreams));
    reader->setErrorHandler(unowned(findings));
    try {
        // The reader takes a stream without octets for no file at all, and calls no handler.
        if (file.peek() == std::istream::traits_type::eof() && !file.bad()) {
            findings.readingEnded(::findings::emptyFile);
        } else {
            reader->read();
        }
    } catch (const klvutil::parse_error& error) {
        // What was read up to here has reached the handlers, so that there is something to show.
        metadata.readingEnded();
        findings.readingEnded(error, describeEnd(error, file, body.element(), body.wholePackages()));
    } catch (const std::exception& error) {
        metadata.readingEnded();
        findings.readingEnded(::findings::readingFailed, error.what());
    }
}
