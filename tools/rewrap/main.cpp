/// Writes an MXF file again, with a fresh layout and the same content.
///
///     rewrap IN OUT [options]
///
/// Essence, system items and generic streams are copied octet for octet; header metadata goes through a model, or through
/// its sets as they are if the model cannot hold it whole. Exits with 0, with 1 if anything is wrong with IN or OUT cannot
/// be written, or with 2 if it was called wrongly.
///
/// IN is read twice: for what the header partition must say, and for the essence. IN stays as it is. If it breaks off, what
/// is whole of it is copied.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <boost/program_options.hpp>

#include "klv/DullErrorHandler.h"
#include "klv/DullKLVHandler.h"
#include "klv/KLVFilter.h"
#include "klv/Locator.h"
#include "klv/parse_error.h"
#include "mxf/engines/MXFReader.h"
#include "mxf/essence/DullMXFGCStructureHandler.h"
#include "mxf/essence/MXFGCEssenceHandler.h"
#include "mxf/essence/MXFGCSplitter.h"
#include "mxf/essence/MXFGCStructureFilter.h"
#include "mxf/index/MXFIndexCalculator.h"
#include "mxf/index/MXFIndexParser.h"
#include "mxf/metadata/coding/MXFMetadataCoder.h"
#include "mxf/metadata/coding/MXFMetadataModelCoder.h"
#include "mxf/metadata/model/MXFUIDGenerator.h"
#include "mxf/metadata/structural/Preface.h"
#include "mxf/structure/DullMXFStructureHandler.h"
#include "mxf/structure/MXFStaticTags.h"
#include "sdk/BRYXMetadataFactory.h"
#include "sdk/BRYXMetadataParser.h"
#include "sdk/BRYXWriter.h"
#include "shared/InputFile.h"
#include "shared/ProgressBar.h"
#include "util/assertion_failure.h"
#include "util/byte_order.h"

namespace {

using Placement = BRYXWriterConfiguration::IndexPlacement;

struct Options {
    BRYXWriterConfiguration configuration;
    bool keepsLayout = false;
    bool verifies = false;
};

/// Counts errors in the file that is read, and tells of them.
class ErrorPrinter final : public DullErrorHandler {
public:
    explicit ErrorPrinter(ProgressBar& progress) : progress_(progress) {}

    void setLocator(const Locator& locator) override { locator_ = &locator; }
    void endStream() override { locator_ = nullptr; }
    void error(const util::uuid& /*id*/, const std::string& message) override {
        progress_.clear();
        std::cerr << "rewrap: " << message << " at octet " << position() << '\n';
        ++errors_;
    }
    void fatalError(const util::uuid& id, const std::string& message) override { error(id, message); }

    /// Something of the file is not copied.
    void lost(const std::string& what) { error({}, what + " is not copied"); }
    /// The file breaks off.
    void broken(const klvutil::parse_error& failure) {
        progress_.clear();
        std::cerr << "rewrap: " << failure.what() << " at octet " << std::streamoff{failure.position()}
                  << "; what is whole up to there is copied\n";
        ++errors_;
    }

    std::uint64_t errors() const { return errors_; }
    std::uint64_t position() const {
        return locator_ == nullptr ? 0 : static_cast<std::uint64_t>(std::streamoff{locator_->streampos()});
    }

private:
    ProgressBar& progress_;
    const Locator* locator_ = nullptr;
    std::uint64_t errors_ = 0;
};

/// Hands out the same identifiers in each run.
class CountingUIDGenerator final : public MXFUIDGenerator {
public:
    MXFUID generateUID() override {
        MXFUID uid{{0xB7, 0x19, 0x64, 0x0E, 0x52, 0xDA, 0x4C, 0x83, 0x91, 0x5F}};
        util::storeBigEndian(&uid.octets[10], ++count_, 6);
        return uid;
    }

private:
    std::uint64_t count_ = 0;
};

/// Cuts whatever is in a body: what is no element of a Generic Container is data, or a system element, all the same.
class AnySplitter final : public MXFGCSplitter {
public:
    using MXFGCSplitter::MXFGCSplitter;

private:
    bool isSystemElement(const KLVKey& /*key*/) const override { return true; }
    bool isEssenceElement(const KLVKey& /*key*/) const override { return true; }
    bool isDataElement(const KLVKey& key) const override {
        return !isPictureElement(key) && !isSoundElement(key) && !isCompoundElement(key);
    }
    bool allowsSecondKind() const override { return true; }
};

// ---- The first reading ----

/// The header metadata of one partition: its sets as they are, and the model if that holds them whole.
struct Metadata {
    MXFMetadataHandler::Primer primer;
    std::vector<MXFPrimedSet> sets;
    std::shared_ptr<Preface> root; ///< null if the model does not hold them whole
};

/// Collects the header metadata of each region: the last one of those that are closed and complete, or else open.
class MetadataCollector final : public MXFMetadataHandler, public MXFMetadataModelHandler, private DullErrorHandler {
public:
    explicit MetadataCollector(ErrorPrinter& errors) : errors_(errors), others_(errors) {
        parser_.setErrorHandler(this);
        parser_.setOtherHandler(&others_);
        // The factory shares its error handler. This one is nobody's to delete.
        factory_.setErrorHandler({std::shared_ptr<void>(), static_cast<ErrorHandler*>(&remarks_)});
    }

    KLVHandler& handler() { return parser_.handler(); }
    void partition(MXFPartitionStatus status) { status_ = status; }
    const Metadata* found() const { return hasFound_ ? &found_ : nullptr; }

    void startMetadata() override {
        region_ = {};
        isWhole_ = true;
    }
    void primer(const Primer& primer) override { region_.primer = primer; }
    bool handlesSet(const KLVKey& /*key*/) override { return true; }
    void primedSet(MXFPrimedSet& set) override { region_.sets.push_back(std::move(set)); }
    void endMetadata() override {
        if (!isWhole_) {
            region_.root.reset();
        }
        const int rank = status_ == MXFPartitionStatus::ClosedComplete     ? 3
                         : status_ == MXFPartitionStatus::ClosedIncomplete ? 2
                         : status_ == MXFPartitionStatus::OpenComplete     ? 1
                                                                           : 0;
        if (rank >= rank_) {
            rank_ = rank;
            found_ = std::move(region_);
            hasFound_ = true;
        }
    }

private:
    // What is remarked on about values is not lost, since sets are copied as they are.
    class Remarks final : public DullErrorHandler {
    public:
        explicit Remarks(bool& isWhole) : isWhole_(isWhole) {}
        void warning(const util::uuid& /*id*/, const std::string& /*message*/) override { isWhole_ = false; }
        void error(const util::uuid& /*id*/, const std::string& /*message*/) override { isWhole_ = false; }

    private:
        bool& isWhole_;
    };

    // What is neither the primer nor a set has no place in what is written.
    class Others final : public DullKLVHandler {
    public:
        explicit Others(ErrorPrinter& errors) : errors_(errors) {}
        bool startIndividualItem(const KLVKey& key, std::uint64_t /*length*/) override {
            return key != klvutil::fillKey && lost(key);
        }
        bool startLabel(const KLVKey& key) override { return lost(key); }
        bool startUniversalSet(const KLVKey& key, std::uint64_t /*length*/) override { return lost(key); }
        bool startFixedLengthPack(const KLVKey& key, std::uint64_t /*length*/) override { return lost(key); }
        bool startVariableLengthPack(const KLVKey& key, std::uint64_t /*length*/, KLVFieldForm /*form*/) override {
            return lost(key);
        }
        bool startWrapper(const KLVKey& key, std::uint64_t /*length*/, KLVWrapperKind /*kind*/) override {
            return lost(key);
        }

    private:
        bool lost(const KLVKey& key) {
            errors_.lost("the triplet with key " + toString(key) + " in the header metadata");
            return false;
        }

        ErrorPrinter& errors_;
    };

    void model(const Model& model) override {
        // What nothing owns is not coded with the root.
        isWhole_ = isWhole_ && model.size() == 1;
        region_.root = std::dynamic_pointer_cast<Preface>(model.front());
    }

    // Whatever is remarked on may not come out of the model as it went in.
    void warning(const util::uuid& /*id*/, const std::string& /*message*/) override { isWhole_ = false; }
    void error(const util::uuid& id, const std::string& message) override {
        isWhole_ = false;
        errors_.error(id, message);
    }

    ErrorPrinter& errors_;
    Others others_;
    Remarks remarks_{isWhole_};
    BRYXMetadataFactory factory_;
    BRYXMetadataParser parser_{factory_, *this};
    MXFPartitionStatus status_ = MXFPartitionStatus::OpenIncomplete;
    Metadata region_;
    bool isWhole_ = false;
    int rank_ = -1;
    Metadata found_;
    bool hasFound_ = false;
};

/// What must be known of an index table to make it anew, beside the places of edit units; or to copy it.
struct IndexTable {
    std::uint32_t indexSID;
    Rational editRate;
    bool isConstant; ///< all edit units have one size
    /// By the edit unit that they begin at. Empty unless they are copied: that of a clip, or all to keep the layout.
    std::map<std::int64_t, MXFIndexTableSegment> segments;
};

/// What must be known of a file before it is written again.
class Survey final : public DullMXFStructureHandler, private DullMXFGCStructureHandler, private MXFIndexHandler {
public:
    Survey(ErrorPrinter& errors, bool keepsLayout) : metadata(errors), errors_(errors), keepsLayout_(keepsLayout) {
        indexParser_.setErrorHandler(&errors);
        splitter_.setErrorHandler(&errors);
    }

    std::uint64_t runInLength = 0;
    MXFPartitionPack pack; ///< of the partition with the latest labels
    MetadataCollector metadata;
    MXFIndexCalculator::Collector index;
    std::map<std::uint32_t, IndexTable> tables;            ///< by body SID
    std::map<std::uint32_t, std::int64_t> contentPackages; ///< by body SID; those that are whole
    bool isBroken = false;                                 ///< the file breaks off

    void read(std::istream& file) {
        MXFReader reader;
        reader.setStructureHandler(this);
        reader.setHeaderMetadataHandler(&metadata.handler());
        reader.setIndexHandler(&indexParser_);
        reader.setBodyHandler(&splitter_);
        reader.setErrorHandler(&errors_);
        try {
            reader.read(file);
        } catch (const klvutil::parse_error& error) {
            errors_.broken(error);
            isBroken = true;
        }
    }

private:
    void runIn(std::uint64_t length) override { runInLength = length; }
    void startPartition(const KLVKey& key, const MXFPartitionPack& started, std::uint64_t /*headerStart*/) override {
        pack = started;
        metadata.partition(mxfutil::partitionStatus(key));
    }
    void endContentPackage() override {
        ++contentPackages[pack.bodySID];
        const auto table = tables.find(pack.bodySID);
        if (table != tables.end() && !isCopied(pack.bodySID)) {
            table->second.segments.clear();
        }
    }

    void startIndex() override {}
    void endIndex() override {}
    void indexTableSegment(const MXFIndexTableSegment& segment) override {
        const IndexTable begun{segment.indexSID, segment.indexEditRate, true, {}};
        IndexTable& table = tables.try_emplace(segment.bodySID, begun).first->second;
        if (table.indexSID != segment.indexSID) {
            errors_.lost("a segment of a second index table of essence container " + std::to_string(segment.bodySID));
            return;
        }
        index.indexTableSegment(segment);
        table.isConstant = table.isConstant && segment.editUnitByteCount != 0;
        if (isCopied(segment.bodySID)) {
            // A later one that begins at the same edit unit may have learnt how many there are.
            const auto kept = table.segments.try_emplace(segment.indexStartPosition, segment).first;
            if (segment.indexDuration >= kept->second.indexDuration) {
                kept->second = segment;
            }
        }
    }

    /// Whether the index table of an essence container may have to be copied, by what is known so far.
    bool isCopied(std::uint32_t bodySID) { return keepsLayout_ || contentPackages[bodySID] < 2; }

    ErrorPrinter& errors_;
    bool keepsLayout_;
    MXFIndexParser indexParser_{*this};
    AnySplitter splitter_{this, nullptr, nullptr};
};

// ---- The second reading ----

/// Ends the second reading of a file that breaks off, where what is whole ends.
struct EndOfWhatIsWhole {};

/// Hands what is read to the writer: bodies cut into elements, or as they are.
class Copier final : public DullMXFStructureHandler {
public:
    Copier(const Survey& survey, BRYXWriter& writer, const Options& options, ProgressBar& progress,
           ErrorPrinter& errors)
        : survey_(survey), writer_(writer), options_(options), structure_(*this, writer.structureReceiver()),
          splitter_(&structure_, &writer.systemReceiver(), &writer.essenceReceiver()),
          body_(*this, options.keepsLayout ? writer.bodyReceiver() : splitter_), genericStream_(*this),
          progress_(progress), errors_(errors) {}

    KLVHandler& body() { return body_; }
    KLVHandler& genericStream() { return genericStream_; }

    void startPartition(const KLVKey& /*key*/, const MXFPartitionPack& pack, std::uint64_t /*headerStart*/) override {
        bodySID_ = pack.bodySID;
    }

    /// Ends what is being written.
    void finish() {
        if (isOpen_) {
            writer_.endEssence();
            isOpen_ = false;
        }
    }

private:
    /// Stops before a content package that is not whole.
    class Structure final : public MXFGCStructureFilter {
    public:
        Structure(Copier& copier, MXFGCStructureHandler& next) : MXFGCStructureFilter(next), copier_(copier) {}
        void startContentPackage() override {
            const auto whole = copier_.survey_.contentPackages.find(copier_.bodySID_);
            const std::int64_t count = whole == copier_.survey_.contentPackages.end() ? 0 : whole->second;
            if (copier_.survey_.isBroken && ++copied_[copier_.bodySID_] > count) {
                throw EndOfWhatIsWhole();
            }
            next().startContentPackage();
        }

    private:
        Copier& copier_;
        std::map<std::uint32_t, std::int64_t> copied_; ///< content packages by body SID
    };

    /// A body goes to its essence container.
    class Body final : public DullKLVFilter {
    public:
        Body(Copier& copier, KLVHandler& receiver) : copier_(copier), receiver_(receiver) { setHandler(&receiver); }
        void setLocator(const Locator& locator) override {
            copier_.errors_.setLocator(locator);
            // What stands in a partition that has no essence container belongs to none.
            setHandler(copier_.bodySID_ == 0 ? static_cast<KLVHandler*>(&nobody_) : &receiver_);
            next().setLocator(locator);
        }
        void startStream(bool accurateLengths) override {
            if (copier_.bodySID_ == 0) {
                copier_.errors_.lost("the body of a partition without essence container");
            } else {
                copier_.startBody();
            }
            isStream_ = copier_.bodySID_ == 0 || !copier_.options_.keepsLayout;
            if (isStream_) {
                next().startStream(accurateLengths);
            }
        }
        void endStream(bool stopped) override {
            copier_.errors_.endStream();
            if (isStream_) {
                next().endStream(stopped);
            }
        }
        bool startIndividualItem(const KLVKey& key, std::uint64_t length) override {
            copier_.progress_.reached(copier_.errors_.position());
            return next().startIndividualItem(key, length);
        }

    private:
        Copier& copier_;
        KLVHandler& receiver_;
        DullKLVHandler nobody_;
        bool isStream_ = false; ///< whether the receiver takes the start and the end of the stream
    };

    /// The body of a generic stream partition goes to one of its own.
    class GenericStream final : public DullKLVFilter {
    public:
        explicit GenericStream(Copier& copier) : copier_(copier) {}
        void startStream(bool /*accurateLengths*/) override {
            copier_.finish();
            setHandler(&copier_.writer_.startGenericStream(copier_.bodySID_));
        }
        void endStream(bool /*stopped*/) override { copier_.writer_.endGenericStream(); }
        // The writer pads on its own.
        void setLocator(const Locator& /*locator*/) override {}

    private:
        Copier& copier_;
    };

    void startBody() {
        if (isOpen_ && bodySID_ == openSID_) {
            if (options_.keepsLayout) {
                writer_.startBodyPartition();
            }
            return;
        }
        finish();
        writer_.startEssence(describe(bodySID_));
        isOpen_ = true;
        openSID_ = bodySID_;
    }

    BRYXEssenceContainer describe(std::uint32_t bodySID) const {
        BRYXEssenceContainer container;
        container.bodySID = bodySID;
        container.indexSID = 0;
        const auto found = survey_.tables.find(bodySID);
        if (found == survey_.tables.end()) {
            return container;
        }
        const IndexTable& table = found->second;
        container.indexSID = table.indexSID;
        container.editRate = table.editRate;
        const auto index = std::make_shared<MXFIndexCalculator>();
        index->setSegments(survey_.index, {container.indexSID, bodySID});
        const auto ranges = index->ranges();
        const auto packages = survey_.contentPackages.find(bodySID);
        const bool isClip = packages != survey_.contentPackages.end() && packages->second == 1 && !ranges.empty() &&
                            ranges.back().end > 1;
        if (packages != survey_.contentPackages.end() && !isClip && !ranges.empty() &&
            ranges.back().end < packages->second) {
            progress_.clear();
            std::cerr << "rewrap: the index table of essence container " << bodySID << " ends at edit unit "
                      << ranges.back().end << " of " << packages->second
                      << "; for those behind it nothing is known but their places\n";
        }
        if (isClip || options_.keepsLayout) {
            for (const auto& segment : table.segments) {
                container.segments.push_back(segment.second);
            }
            return container;
        }
        container.isConstant = table.isConstant;
        container.describe = [index](std::int64_t editUnit, MXFIndexEntry& entry) {
            if (index->contains(editUnit)) {
                index->describe(editUnit, entry);
            }
        };
        return container;
    }

    const Survey& survey_;
    BRYXWriter& writer_;
    const Options& options_;
    Structure structure_;
    AnySplitter splitter_;
    Body body_;
    GenericStream genericStream_;
    ProgressBar& progress_;
    ErrorPrinter& errors_;
    std::uint32_t bodySID_ = 0;
    bool isOpen_ = false;
    std::uint32_t openSID_ = 0;
};

/// @p primer with an entry for each property of @p sets, and none twice: as a damaged file need not have it.
MXFMetadataHandler::Primer wholePrimer(const MXFMetadataHandler::Primer& primer,
                                       const std::vector<MXFPrimedSet>& sets) {
    std::map<KLVKey, std::uint16_t> tags;
    std::set<std::uint16_t> taken;
    for (const auto& [tag, label] : primer) {
        if (taken.count(tag) == 0 && tags.emplace(label, tag).second) {
            taken.insert(tag);
        }
    }
    std::uint16_t next = mxfutil::firstDynamicTag;
    for (const MXFPrimedSet& set : sets) {
        for (const auto& property : set.properties) {
            if (tags.count(property.first) != 0) {
                continue;
            }
            std::uint16_t tag = mxfutil::staticTag(property.first);
            while (tag == 0 || taken.count(tag) != 0) {
                tag = next++;
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
        throw std::runtime_error("there is no header metadata");
    }
    BRYXHeaderMetadata metadata;
    isModel = found->root != nullptr;
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

void rewrap(std::istream& in, const std::string& out, Options options, ErrorPrinter& errors, ProgressBar& progress) {
    Survey survey(errors, options.keepsLayout);
    survey.read(in);
    if (survey.isBroken && options.keepsLayout) {
        throw std::runtime_error("what breaks off cannot keep its layout");
    }
    in.clear();
    in.seekg(0);
    bool isModel = false;
    const BRYXHeaderMetadata metadata = headerMetadata(survey, isModel);
    if (!isModel) {
        progress.clear();
        std::cerr << "rewrap: the model does not hold all header metadata; its sets are copied as they are\n";
    }
    if (options.keepsLayout) {
        options.configuration.kagSize = survey.pack.kagSize;
    }

    const auto mode = std::ios::in | std::ios::out | std::ios::trunc | std::ios::binary;
    const auto file = std::make_shared<std::fstream>(out, mode);
    if (!*file) {
        throw std::runtime_error(out + " cannot be written");
    }
    std::vector<char> runIn(static_cast<std::size_t>(survey.runInLength));
    in.read(runIn.data(), static_cast<std::streamsize>(runIn.size()));
    in.seekg(0);
    file->write(runIn.data(), static_cast<std::streamsize>(runIn.size()));
    const std::shared_ptr<BRYXWriter> writer =
        options.verifies ? createVerifyingBRYXWriter(file) : createBRYXWriter(file);
    writer->setConfiguration(options.configuration);
    writer->start(metadata);
    Copier copier(survey, *writer, options, progress, errors);
    MXFReader reader;
    reader.setStructureHandler(&copier);
    reader.setBodyHandler(&copier.body());
    reader.setGenericStreamHandler(&copier.genericStream());
    DullErrorHandler heard; // everything has been told of once
    reader.setErrorHandler(&heard);
    try {
        reader.read(in);
    } catch (const EndOfWhatIsWhole&) {
        in.clear();
    } catch (const klvutil::parse_error&) {
        // That a file breaks off has been told of, and everything whole has been copied.
        if (!survey.isBroken) {
            throw;
        }
    }
    copier.finish();
    writer->finish(metadata);
}

int run(const std::string& in, const std::string& out, const Options& options) {
    std::ifstream file;
    if (!openInput(file, in, "rewrap")) {
        return 1;
    }
    std::error_code unknown;
    if (std::filesystem::equivalent(in, out, unknown)) {
        std::cerr << "rewrap: " << out << " is what is read\n";
        return 1;
    }
    ProgressBar progress(sizeOf(file));
    ErrorPrinter errors(progress);
    try {
        rewrap(file, out, options, errors, progress);
        progress.clear();
    } catch (const std::exception& error) {
        progress.clear();
        std::cerr << "rewrap: " << error.what() << '\n';
        return 1;
    }
    return errors.errors() == 0 ? 0 : 1;
}

Placement placementOf(const std::string& name) {
    static const std::map<std::string, Placement> names{
        {"none", Placement::None}, {"footer", Placement::Footer}, {"after", Placement::AfterEssence}};
    const auto found = names.find(name);
    if (found == names.end()) {
        throw boost::program_options::error("there is no index placement \"" + name + "\"");
    }
    return found->second;
}

} // namespace

int main(int argc, char** argv) {
    namespace po = boost::program_options;
    Options options;
    BRYXWriterConfiguration& configuration = options.configuration;
    std::string placement = "after";
    po::options_description described("Writes an MXF file again, with a fresh layout and the same content.\n\n"
                                      "  rewrap IN OUT [options]\n\nOptions");
    const auto value = [](auto& variable) { return po::value(&variable)->default_value(variable); };
    described.add_options()("kag", value(configuration.kagSize), "octets of the KLV alignment grid")                 //
        ("partition-duration", value(configuration.partitionDuration), "content packages of a partition; 0 for all") //
        ("partition-size", value(configuration.partitionSize), "octets of essence of a partition; 0 for all")        //
        ("header-space", value(configuration.headerSpace), "least octets of header metadata")                        //
        ("index", value(placement), "none, footer, or after its essence")                                            //
        ("keep-layout", "copy grid, partitions and fill of the essence, and the index table")                        //
        ("fixed-uids", "make identifiers that are the same each time")                                               //
        ("verify", "read back what is written")("help", "print this text");
    po::options_description all;
    all.add(described).add_options()("in", po::value<std::string>())("out", po::value<std::string>());
    po::positional_options_description positional;
    positional.add("in", 1).add("out", 1);
    try {
        po::variables_map arguments;
        po::store(po::command_line_parser(argc, argv).options(all).positional(positional).run(), arguments);
        po::notify(arguments);
        if (arguments.count("help") != 0) {
            std::cout << described;
            return 0;
        }
        if (arguments.count("out") == 0) {
            throw po::error("two files are needed");
        }
        configuration.indexPlacement = placementOf(placement);
        options.keepsLayout = arguments.count("keep-layout") != 0;
        options.verifies = arguments.count("verify") != 0;
        if (arguments.count("fixed-uids") != 0) {
            configuration.uidGenerator = std::make_shared<CountingUIDGenerator>();
        }
        return run(arguments["in"].as<std::string>(), arguments["out"].as<std::string>(), options);
    } catch (const po::error& error) {
        std::cerr << "rewrap: " << error.what() << "\nTry rewrap --help.\n";
        return 2;
    }
}
