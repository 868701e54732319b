#include "rewrap/Rewrap.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "klv/DullErrorHandler.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/structure/MXFStaticTags.h"
#include "rewrap/Copier.h"
#include "rewrap/FrontOfFile.h"
#include "rewrap/Survey.h"

namespace {

/// @p primer with an entry for each property of @p sets, and none twice: as a damaged file need not have it. Throws
/// std::runtime_error if there are not enough tags.
MXFMetadataHandler::Primer wholePrimer(const MXFMetadataHandler::Primer& primer,
                                       const std::vector<MXFPrimedSet>& sets) {
    std::map<KLVKey, std::uint16_t> tags;
    std::set<std::uint16_t> taken;
    for (const auto& [tag, label] : primer) {
        if (taken.count(tag) == 0 && tags.emplace(label, tag).second) {
            taken.insert(tag);
        }
    }
    std::uint32_t next = mxfutil::firstDynamicTag;
    for (const MXFPrimedSet& set : sets) {
        for (const auto& property : set.properties) {
            if (tags.count(property.first) != 0) {
                continue;
            }
            std::uint16_t tag = mxfutil::staticTag(property.first);
            while (tag == 0 || taken.count(tag) != 0) {
                if (next > std::numeric_limits<std::uint16_t>::max()) {
                    throw std::runtime_error("the header metadata has more properties than there are tags");
                }
                tag = static_cast<std::uint16_t>(next++);
            }
            tags.emplace(property.first, tag);
            taken.insert(tag);
        }
    }
    MXFMetadataHandler::Primer result;
    for (const auto& [label, tag] : tags) {
        result.emplace_back(tag, label);
    }
    std::sort(result.begin(), result.end(), [](const auto& a, const auto& b) { return a.first < b.first; });
    return result;
}

/// What is to be written as header metadata.
BRYXHeaderMetadata headerMetadata(const Survey& survey, bool& isModel) {
    const Metadata* const found = survey.metadata.found();
    if (found == nullptr) {
        throw std::runtime_error(std::string("there is no ") + (survey.isCut ? "whole " : "") +
                                 "header metadata; nothing can be copied");
    }
    BRYXHeaderMetadata metadata;
    isModel = found->isModelWhole;
    if (isModel) {
        metadata = toBRYXHeaderMetadata(found->root);
    } else {
        metadata.send = [found, primer = wholePrimer(found->primer, found->sets)](MXFMetadataHandler& handler) {
            handler.startMetadata();
            handler.primer(primer);
            for (MXFPrimedSet set : found->sets) {
                handler.primedSet(set);
            }
            handler.endMetadata();
        };
    }
    metadata.operationalPattern = survey.pack.operationalPattern;
    metadata.essenceContainers = survey.pack.essenceContainers;
    return metadata;
}

/// Reads @p in for the second time, as far as it is whole, and hands it to @p copier.
void copyWhole(std::istream& in, const Survey& survey, Copier& copier) {
    MXFReader reader;
    reader.setStructureHandler(&copier);
    reader.setBodyHandler(&copier.body());
    reader.setGenericStreamHandler(&copier.genericStream());
    DullErrorHandler heard; // everything has been told of once
    reader.setErrorHandler(&heard);
    try {
        if (survey.brokenAt) {
            FrontOfFile front(*in.rdbuf(), *survey.brokenAt);
            std::istream whole(&front);
            reader.read(whole);
        } else {
            reader.read(in);
        }
    } catch (const Copier::EndOfWhatIsWhole&) {
        // What follows is not whole.
    } catch (const klvutil::parse_error&) {
        // That a file breaks off has been told of, and everything whole has been copied.
        if (!survey.brokenAt) {
            throw;
        }
    }
    if (survey.cutClip) {
        copier.copy(*survey.cutClip, in);
    }
    copier.finish();
}

} // namespace

void rewrap(std::istream& in, const std::function<std::shared_ptr<std::fstream>()>& create, RewrapOptions options,
            ErrorPrinter& errors, ProgressBar& progress) {
    Survey survey(errors, options.keepsLayout);
    survey.read(in);
    if (survey.brokenAt && options.keepsLayout) {
        throw std::runtime_error("what breaks off cannot keep its layout");
    }
    in.clear();
    in.seekg(0);
    bool isModel = false;
    const BRYXHeaderMetadata metadata = headerMetadata(survey, isModel);
    const std::shared_ptr<std::fstream> file = create();
    if (survey.isCut) {
        errors.remark("what is whole up to there is copied" +
                      (survey.cutClip ? ", and of the clip the " + std::to_string(survey.cutClip->octets) +
                                            " octets of whole edit units"
                                      : std::string()));
    }
    if (!isModel) {
        errors.remark("the model does not hold all header metadata; its sets are copied as they are");
    }
    if (options.keepsLayout) {
        options.configuration.kagSize = survey.pack.kagSize;
    }
    if (survey.isCut) {
        // Durations need not be those of what is left, and nobody says that what the metadata tells is the last word.
        options.configuration.headerStatus = MXFPartitionStatus::OpenIncomplete;
        options.configuration.footerStatus = MXFPartitionStatus::OpenIncomplete;
    }

    std::vector<char> runIn(static_cast<std::size_t>(survey.runInLength));
    in.read(runIn.data(), static_cast<std::streamsize>(runIn.size()));
    in.seekg(0);
    file->write(runIn.data(), static_cast<std::streamsize>(runIn.size()));
    const std::shared_ptr<BRYXWriter> writer =
        options.verifies ? createVerifyingBRYXWriter(file) : createBRYXWriter(file);
    writer->setConfiguration(options.configuration);
    writer->start(metadata);
    Copier copier(survey, *writer, options.keepsLayout, progress, errors);
    copyWhole(in, survey, copier);
    writer->finish(metadata);
}
