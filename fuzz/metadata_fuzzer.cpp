/// Reads the input as a header metadata region, codes the model that comes of it, and reads that again. The second
/// model must equal the first. The only models that cannot be coded are those that lack the target of a required
/// reference, and those whose order of sets is fixed by a contradictory hint.

#include <cstdio>
#include <cstdlib>

#include "Expect.h"
#include "klv/parse_error.h"
#include "mxf/metadata/model/MXFOrderHint.h"
#include "support/Models.h"
#include "util/assertion_failure.h"

namespace {

/// What coding a model depends on.
struct Survey {
    bool lacksTarget = false; ///< of a required reference
    bool isPrivate = false;   ///< has properties that are not written, such as a hint at an order

    explicit Survey(const MetadataRoot& set) { look(set); }

private:
    void look(const MetadataRoot& set) {
        for (const MXFProperty* const property : set.getDescription().properties()) {
            if (property->kind() == MXFProperty::Kind::Value) {
                continue;
            }
            const MXFPropertyValue value = property->value(set);
            bool hasTarget = !std::holds_alternative<MXFScalar>(value) || set.hasDarkProperty(property->label());
            mxfutil::forEachReference(value, [&](const auto& target) {
                hasTarget = true;
                if (property->kind() == MXFProperty::Kind::StrongReference) {
                    look(*target);
                }
            });
            lacksTarget = lacksTarget || (property->isRequired() && !hasTarget);
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
    expect(survey.isPrivate || survey.lacksTarget != refusal.empty(),
           refusal.empty() ? "a reference that leads nowhere is coded" : "a model cannot be coded: " + refusal);
    if (!refusal.empty()) {
        return 0;
    }
    ModelReader again(factory);
    const Model second = again.readRegion(octets);
    expect(second.size() == 1, "read again, it is not one model: " + joined(again.log));
    const std::string difference = mxfutil::firstDifference(*model.front(), *second.front());
    expect(difference.empty() || survey.isPrivate, "read again, the model differs: " + difference);
    return 0;
}
