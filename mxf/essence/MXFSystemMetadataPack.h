#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <boost/optional.hpp>

#include "klv/KLVKey.h"
#include "klv/KLVValueTypes.h"
#include "klv/ValueCoding.h"
#include "timecode/Timecode.h"
#include "util/Api.h"

namespace bryx {

/// A timecode and its binary groups, as ST 331 §8.2 packs them: frames, seconds, minutes and hours in binary-coded
/// decimal digits with the flags of ST 12-1 in their upper bits, then four octets of binary groups.
struct BRYX_API MXFTimecodeStamp {
    std::array<std::uint8_t, 8> octets{};

    MXFTimecodeStamp() = default;

    /// @param framesPerSecond nominal rate, such as 60 for 60000/1001. At 48, 50 and 60, where two frames share a label,
    ///     the field mark tells the second one.
    explicit MXFTimecodeStamp(const Timecode& timecode, unsigned framesPerSecond = 0);

    /// The label; none if the digits are not those of one.
    boost::optional<Timecode> timecode(unsigned framesPerSecond = 0) const;
};

/// A creation or user date/time stamp (ST 326).
struct MXFDateTimeStamp {
    /// The octets after the timecode, up to the length that every kind of stamp has.
    struct Rest {
        std::array<std::uint8_t, 8> octets{};
    };

    static constexpr std::uint8_t timecodeType = 0x81;

    std::uint8_t type = 0; ///< what follows: timecodeType, or 0 for nothing
    MXFTimecodeStamp stamp;
    Rest rest;

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("type", self.type);
        visit("stamp", self.stamp);
        visit("rest", self.rest);
    }
};

/// The bits of MXFSystemMetadataPack::bitmap: what there is in the content package (ST 326).
namespace MXFSystemBitmap {

inline constexpr std::uint8_t errorCorrection = 0x80; ///< FEC is active, on an SDTI link
inline constexpr std::uint8_t label = 0x40;           ///< the label of the essence container
inline constexpr std::uint8_t creationStamp = 0x20;   ///< a creation date/time stamp
inline constexpr std::uint8_t userStamp = 0x10;       ///< a user date/time stamp
inline constexpr std::uint8_t pictureItem = 0x08;     ///< elements of the picture item
inline constexpr std::uint8_t soundItem = 0x04;       ///< elements of the sound item
inline constexpr std::uint8_t dataItem = 0x02;        ///< elements of the data item
inline constexpr std::uint8_t controlData = 0x01;     ///< control data in the system item

} // namespace MXFSystemBitmap

/// The system metadata pack, with which a system item begins (ST 326, ST 385).
struct MXFSystemMetadataPack {
    std::uint8_t bitmap = 0; ///< see MXFSystemBitmap
    std::uint8_t rate = 0;   ///< of content packages; see mxfutil::packageRate()
    std::uint8_t type = 0;
    std::uint16_t channelHandle = 0;
    std::uint16_t continuityCount = 0; ///< goes up by one with each content package, and from 65,535 to 0
    KLVKey label;                      ///< of the essence container
    MXFDateTimeStamp creationStamp;
    MXFDateTimeStamp userStamp;

    /// Octets on the wire.
    static constexpr std::size_t size = 57;

    /// Visits the fields in their order on the wire.
    template <class Self, class Visit>
    static void fields(Self& self, Visit&& visit) {
        visit("bitmap", self.bitmap);
        visit("rate", self.rate);
        visit("type", self.type);
        visit("channelHandle", self.channelHandle);
        visit("continuityCount", self.continuityCount);
        visit("label", self.label);
        visit("creationStamp", self.creationStamp);
        visit("userStamp", self.userStamp);
    }
};

namespace mxfutil {

/// The content packages a second that the rate octet of a system metadata pack stands for; none for a code that ST 326
/// does not define.
BRYX_API boost::optional<Rational> packageRate(std::uint8_t rate);

/// The rate octet for that many content packages a second; none if ST 326 has no code for it.
BRYX_API boost::optional<std::uint8_t> packageRateCode(const Rational& rate);

/// The timecode of a stamp of @p pack, with frames counted at its rate; none if the stamp has none.
BRYX_API boost::optional<Timecode> stampTimecode(const MXFSystemMetadataPack& pack, const MXFDateTimeStamp& stamp);

} // namespace mxfutil

} // namespace bryx
