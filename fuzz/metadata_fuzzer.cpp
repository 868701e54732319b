/// Reads the input as a header metadata region, codes the model that comes of it, and reads that again. The second
/// model must equal the first, unless the first refused a reference to one of its sets, which the second, in another
/// order, may prefer. The only models that cannot be coded are those that lack a required reference, and those whose
/// order of sets is fixed by a contradictory hint.

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <set>

#include "Expect.h"
#include "klv/parse_error.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "mxf/metadata/model/MXFSetDescription.h"
#include "support/Models.h"
#include "util/assertion_failure.h"

namespace {

/// What coding a model depends on.
struct Survey {
    bool lacksReference = false; ///< that is required
    bool isPrivate = false;      ///< has properties that are not written, such as a hint at an order

    /// Whether one of the sets is referred to by a reference that was refused.
    bool refusesReference() const {
        return std::any_of(unresolved.begin(), unresolved.end(),
                           [&](const MXFUID& uid) { return sets.count(uid) != 0; });
    }

    explicit Survey(const MetadataRoot& set) { look(set); }

private:
    static bool isList(const MXFProperty& property, const MetadataRoot& set) {
        return !std::holds_alternative<MXFScalar>(property.value(set));
    }

    std::set<MXFUID> sets;
    std::set<MXFUID> unresolved;

    void look(const MetadataRoot& set) {
        sets.insert(set.getInstanceUID());
        for (const MXFProperty* const property : set.getDescription().properties()) {
            if (property->kind() == MXFProperty::Kind::Value) {
                continue;
            }
            const auto uids = set.getUnresolvedReferences(property->label());
            unresolved.insert(uids.begin(), uids.end());
            const bool isThere = property->isPresent(set) || set.hasDarkProperty(property->label());
            lacksReference = lacksReference || (property->isRequired() && !isThere && !isList(*property, set));
        }
        for (const auto& owned : mxfutil::ownedSets(set)) {
            look(*owned);
        }
        for (auto dark = set.beginDarkProperties(); dark != set.endDarkProperties(); ++dark) {
            isPrivate = isPrivate || dark->first == mxfutil::orderHintLabel || mxfutil::isPrivateLabel(dark->first);
        }
    }
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    BRYXMetadataFactory factory;
    ModelReader reader(factory);
    Model model;
    try {
        model = reader.readRegion({data, data + size});
    } catch (const klvutil::parse_error&) {
        return 0;
    }
    if (model.empty()) {
        return 0;
    }
    const Survey survey(*model.front());
    std::string octets;
    std::string refusal;
    try {
        octets = coded(model.front(), factory);
    } catch (const util::assertion_failure& failure) {
        refusal = failure.what();
    }
    expect(survey.isPrivate || survey.lacksReference != refusal.empty(),
           refusal.empty() ? "a reference that is not there is coded" : "a model cannot be coded: " + refusal);
    if (!refusal.empty() || survey.refusesReference()) {
        return 0;
    }
    ModelReader again(factory);
    const Model second = again.readRegion(octets);
    expect(second.size() == 1, "read again, it is not one model: " + joined(again.log));
    const std::string difference = mxfutil::firstDifference(*model.front(), *second.front());
    expect(difference.empty() || survey.isPrivate, "read again, the model differs: " + difference);
    return 0;
}
