#pragma once

#include <cstdint>

#include "klv/GroupValidatorFilter.h"
#include "klv/KLVFilter.h"

namespace bryx {

/// Lets body triplets pass as long as it is open, and holds their senders to the lengths that they announce.
class BRYXBodyGate final : public ActionKLVFilter {
public:
    void setReceiver(KLVHandler& receiver) {
        groups_.setHandler(&receiver);
        setHandler(&groups_);
    }
    void open() { isOpen_ = true; }
    /// Requires "complete element": that no triplet is open.
    void close() {
        requireComplete();
        isOpen_ = false;
    }
    void requireComplete() const { util::require(groups_.isComplete(), "complete element"); }

    void berLengthForm(std::uint8_t form) override {
        ActionKLVFilter::berLengthForm(form);
        form_ = form;
    }
    /// Tells the form again that the sender told, after somebody else has told another one.
    void repeatLengthForm() {
        if (form_ != 0) {
            ActionKLVFilter::berLengthForm(form_);
        }
    }

private:
    void before() override { util::require(isOpen_, "in essence"); }
    void after() override {}

    GroupValidatorFilter groups_;
    bool isOpen_ = false;
    std::uint8_t form_ = 0;
};

} // namespace bryx
