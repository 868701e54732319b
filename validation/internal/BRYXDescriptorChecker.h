#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <set>

#include "mxf/metadata/structural/Preface.h"
#include "validation/internal/BRYXModelChecker.h"

namespace bryx {

class CDCIPictureDescriptor;
class FileDescriptor;
class MultipleDescriptor;
class PictureDescriptor;
class SoundDescriptor;
class SourcePackage;
class WaveAudioDescriptor;

/// Checks the descriptors of a model: their numbers, and what they name.
class BRYXDescriptorChecker : public BRYXModelChecker {
public:
    BRYXDescriptorChecker(const BRYXValidator& validator, const Preface& preface);

    /// @param isLinked whether the essence of @p package is in the file
    void check(const SourcePackage& package, bool isLinked) const;

private:
    /// What the descriptors of one package are held against.
    struct Package {
        bool isLinked;
        std::map<std::uint32_t, std::shared_ptr<const Track>> tracks; ///< by ID
        // The link IDs of labels of multichannel audio.
        std::set<MXFUID> soundfields;
        std::set<MXFUID> groups;
    };

    static void addLabels(const FileDescriptor& descriptor, Package& package);
    void checkMultiple(const Package& package, const MultipleDescriptor& multiple) const;
    void checkDescriptor(const Package& package, const FileDescriptor& descriptor) const;
    void checkFile(const Package& package, const FileDescriptor& descriptor) const;
    void checkDuration(const Package& package, const FileDescriptor& descriptor) const;
    void checkPicture(const PictureDescriptor& descriptor) const;
    void checkCDCI(const CDCIPictureDescriptor& descriptor) const;
    void checkSound(const SoundDescriptor& descriptor) const;
    void checkWave(const WaveAudioDescriptor& descriptor) const;
    void checkLabels(const Package& package, const FileDescriptor& descriptor) const;

    std::set<KLVKey> essenceContainers_; ///< of the Preface
};

} // namespace bryx
