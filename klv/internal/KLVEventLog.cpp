#include "klv/internal/KLVEventLog.h"

#include <cstring>

namespace bryx::klvutil {

std::string KLVEventLog::difference(const KLVEventLog& read) const {
    if (events_.size() != read.events_.size()) {
        return "number of events";
    }
    for (std::size_t i = 0; i < events_.size(); ++i) {
        const Event& own = events_[i];
        const Event& other = read.events_[i];
        const std::string place = i == 0 ? "" : " of event " + std::to_string(i);
        // The writer chooses a form that no sender has told.
        const bool isSameForm = own.lengthForm == 0 || own.lengthForm == other.lengthForm;
        if (std::strcmp(own.name, other.name) != 0 || own.key.octets != other.key.octets ||
            own.detail != other.detail || !isSameForm) {
            return std::string(own.name) + place;
        }
        // A length that was not known when the item started is that of its value.
        if (own.length != other.length && (own.length != unknownLength || other.length != own.valueSize)) {
            return "length" + place;
        }
        if (own.valueSize != other.valueSize || own.checkSum != other.checkSum) {
            return "value" + place;
        }
    }
    return {};
}

bool KLVEventLog::start(const char* name, const KLVKey& key, std::uint64_t length, std::uint32_t detail) {
    if (depth_ == 0) {
        events_.clear();
    }
    ++depth_;
    events_.push_back({name, key, length, form_, detail});
    sum_.reset();
    return true;
}

void KLVEventLog::end(const char* name, const KLVKey& key, std::uint32_t detail) {
    --depth_;
    events_.push_back({name, key, 0, 0, detail});
}

void KLVEventLog::setLocator(const Locator& /*locator*/) {}
void KLVEventLog::startStream(bool /*accurateLengths*/) {
    clear();
}
void KLVEventLog::endStream(bool /*stopped*/) {}
void KLVEventLog::berLengthForm(std::uint8_t form) {
    form_ = form;
}
bool KLVEventLog::startIndividualItem(const KLVKey& key, std::uint64_t length) {
    return start("individual item", key, length);
}
void KLVEventLog::endIndividualItem(const KLVKey& key) {
    end("end of individual item", key);
}
bool KLVEventLog::startLabel(const KLVKey& key) {
    start("label", key, 0);
    events_.back().lengthForm = 0; // it has no length
    return true;
}
void KLVEventLog::endLabel(const KLVKey& key) {
    end("end of label", key);
}
bool KLVEventLog::startUniversalSet(const KLVKey& key, std::uint64_t length) {
    return start("universal set", key, length);
}
void KLVEventLog::endUniversalSet(const KLVKey& key) {
    end("end of universal set", key);
}
bool KLVEventLog::startLocalSet(const KLVKey& key, std::uint64_t length, KLVFieldForm tagForm,
                                KLVFieldForm lengthForm) {
    return start("local set", key, length,
                 static_cast<std::uint32_t>(tagForm) * 4 + static_cast<std::uint32_t>(lengthForm));
}
void KLVEventLog::endLocalSet(const KLVKey& key) {
    end("end of local set", key);
}
bool KLVEventLog::startLocalItem(std::uint32_t tag, std::uint64_t length) {
    return start("local item", {}, length, tag);
}
void KLVEventLog::endLocalItem(std::uint32_t tag) {
    end("end of local item", {}, tag);
}
bool KLVEventLog::startFixedLengthPack(const KLVKey& key, std::uint64_t length) {
    return start("fixed-length pack", key, length);
}
void KLVEventLog::endFixedLengthPack(const KLVKey& key) {
    end("end of fixed-length pack", key);
}
bool KLVEventLog::startVariableLengthPack(const KLVKey& key, std::uint64_t length, KLVFieldForm itemLengthForm) {
    return start("variable-length pack", key, length, static_cast<std::uint32_t>(itemLengthForm));
}
void KLVEventLog::endVariableLengthPack(const KLVKey& key) {
    end("end of variable-length pack", key);
}
bool KLVEventLog::startVariableLengthPackItem(std::uint64_t length) {
    return start("item of variable-length pack", {}, length);
}
void KLVEventLog::endVariableLengthPackItem() {
    end("end of item of variable-length pack", {});
}
bool KLVEventLog::startWrapper(const KLVKey& key, std::uint64_t length, KLVWrapperKind kind) {
    return start("wrapper", key, length, static_cast<std::uint32_t>(kind));
}
void KLVEventLog::endWrapper(const KLVKey& key) {
    end("end of wrapper", key);
}
bool KLVEventLog::getValueBuffer(std::uint64_t /*length*/, std::uint64_t& /*offset*/, std::uint64_t& /*size*/,
                                 std::uint8_t*& /*buffer*/) {
    return true;
}
void KLVEventLog::value(const std::uint8_t* data, std::uint64_t size) {
    Event& item = events_.back();
    item.valueSize += size;
    sum_.process_bytes(data, static_cast<std::size_t>(size));
    item.checkSum = sum_.checksum();
}

} // namespace bryx::klvutil
