#include "klv/VerifyingKLVHandler.h"

#include <istream>
#include <string>

#include "klv/DullKLVHandler.h"
#include "klv/GenericKLVReader.h"
#include "klv/GroupValidatorFilter.h"
#include "klv/internal/KLVEventLog.h"
#include "klv/internal/StreamAccess.h"
#include "klv/parse_error.h"

namespace bryx {

namespace klvutil::detail {

VerifyingPass::VerifyingPass(std::iostream& written, KLVHandler* inner)
    : written_(written), groups_(std::make_unique<GroupValidatorFilter>()), sent_(std::make_unique<KLVEventLog>()),
      sink_(std::make_unique<KLVEventLog>()), start_(written.tellp()) {
    groups_->setHandler(inner != nullptr ? inner : sink_.get());
}

VerifyingPass::~VerifyingPass() = default;

KLVHandler& VerifyingPass::groups() {
    return *groups_;
}

KLVHandler& VerifyingPass::log() {
    return *sent_;
}

void VerifyingPass::verifyIfComplete() {
    if (sent_->isComplete()) {
        verify();
    }
}

void VerifyingPass::verify() {
    const auto fail = [&](const std::string& what) {
        throw VerifyingKLVHandler::exception("triplet at " + std::to_string(start_) + " with key " +
                                             toString(sent_->key()) + " does not read back as written: " + what);
    };
    const klvutil::StreamExceptionsOff exceptionsOff(written_);
    const std::streamoff end = written_.flush().tellp();
    KLVEventLog read;
    GenericKLVReader reader;
    reader.setHandler(&read);
    std::string difference;
    bool stop = false;
    written_.seekg(start_);
    try {
        reader.parse(written_, start_, end, stop);
    } catch (const parse_error& error) {
        fail(error.what());
    }
    written_.clear();
    written_.seekp(end);
    const std::string found = sent_->difference(read);
    if (!found.empty()) {
        fail(found);
    }
    sent_->clear();
    start_ = end;
}

template class KLVForwarding<VerifyingPass>;

} // namespace klvutil::detail

VerifyingKLVHandler::exception::~exception() = default;
VerifyingKLVHandler::~VerifyingKLVHandler() = default;

} // namespace bryx
