#include "PlatformAbstraction/strings/EncodingInfo.h"

#include <array>

#include "Exceptions/ErrorException.h"
#include "Exceptions/OrskaThrow.h"

namespace Orska::Support {

namespace {

struct EncodingRow {
    const char* m_name;  ///< ICU converter name
    std::uint8_t m_codeUnitWidth;
    std::uint8_t m_maxCodeUnitsPerCodePoint;
    bool m_isAsciiSuperset;
};

// Kept on purpose, so that sizes and paths stay the same: the worst cases of some single-byte
// sets are too large, which only makes buffers larger, and 84, unlike its neighbours, is not an
// ASCII superset.
constexpr std::array<EncodingRow, ENCODING_COUNT> ENCODINGS = {{
    {"UTF-8", 1, 4, true},                          // 0
    {"UTF-16LE", 2, 2, false},                      // 1
    {"UTF-16BE", 2, 2, false},                      // 2
    {"UTF-32LE", 4, 1, false},                      // 3
    {"UTF-32BE", 4, 1, false},                      // 4
    {"latin1", 1, 1, true},                         // 5
    {"cp1252", 1, 1, true},                         // 6
    {"US-ASCII", 1, 1, true},                       // 7
    {"ISO-8859-2", 1, 1, true},                     // 8
    {"ISO-8859-3", 1, 1, true},                     // 9
    {"ISO-8859-4", 1, 1, true},                     // 10
    {"ISO-8859-5", 1, 1, true},                     // 11
    {"ISO-8859-6", 1, 1, true},                     // 12
    {"ISO-8859-7", 1, 1, true},                     // 13
    {"ISO-8859-8", 1, 1, true},                     // 14
    {"ISO-8859-9", 1, 1, true},                     // 15
    {"ISO-8859-10", 1, 2, true},                    // 16
    {"ISO_2022,locale=ja,version=1", 1, 2, false},  // 17
    {"SJIS", 1, 2, false},                          // 18
    {"EUC-JP", 1, 2, false},                        // 19
    {"ISO_646.irv:1991", 1, 2, true},               // 20
    {"KS-C-5601", 1, 2, false},                     // 21
    {"ISO_2022,locale=ko,version=0", 1, 2, false},  // 22
    {"EUC-KR", 1, 2, false},                        // 23
    {"ISO_2022,locale=ja,version=0", 1, 2, false},  // 24
    {"ISO_2022,locale=ja,version=2", 1, 2, false},  // 25
    {"GB-2312", 1, 2, false},                       // 26
    {"ISO-2022-CN", 1, 2, false},                   // 27
    {"ISO-2022-CN-EXT", 1, 2, false},               // 28
    {"ISO-8859-13", 1, 1, true},                    // 29
    {"ISO-8859-14", 1, 1, true},                    // 30
    {"ISO-8859-15", 1, 1, true},                    // 31
    {"GBK", 1, 2, false},                           // 32
    {"HP-ROMAN8", 1, 2, true},                      // 33
    {"CP850", 1, 1, true},                          // 34
    {"IBM852", 1, 2, true},                         // 35
    {"IBM437", 1, 1, true},                         // 36
    {"Windows-31J", 1, 2, false},                   // 37
    {"GB2312", 1, 2, false},                        // 38
    {"BIG5", 1, 2, false},                          // 39
    {"macintosh", 1, 1, true},                      // 40
    {"IBM037", 1, 1, false},                        // 41
    {"IBM273", 1, 1, false},                        // 42
    {"IBM277", 1, 1, false},                        // 43
    {"IBM278", 1, 1, false},                        // 44
    {"IBM280", 1, 2, false},                        // 45
    {"IBM284", 1, 1, false},                        // 46
    {"IBM285", 1, 1, false},                        // 47
    {"IBM290", 1, 1, false},                        // 48
    {"IBM297", 1, 1, false},                        // 49
    {"IBM420", 1, 1, false},                        // 50
    {"IBM424", 1, 2, false},                        // 51
    {"IBM500", 1, 1, false},                        // 52
    {"IBM851", 1, 2, false},                        // 53
    {"IBM855", 1, 2, true},                         // 54
    {"IBM857", 1, 2, true},                         // 55
    {"IBM860", 1, 2, true},                         // 56
    {"IBM861", 1, 2, true},                         // 57
    {"IBM863", 1, 2, true},                         // 58
    {"IBM864", 1, 2, true},                         // 59
    {"IBM865", 1, 2, true},                         // 60
    {"IBM869", 1, 2, true},                         // 61
    {"IBM870", 1, 1, false},                        // 62
    {"IBM871", 1, 2, false},                        // 63
    {"IBM918", 1, 2, false},                        // 64
    {"IBM1026", 1, 2, false},                       // 65
    {"KOI8-R", 1, 1, false},                        // 66
    {"HZ-GB-2312", 1, 2, false},                    // 67
    {"IBM866", 1, 1, true},                         // 68
    {"IBM775", 1, 1, true},                         // 69
    {"IBM00858", 1, 2, true},                       // 70
    {"IBM01140", 1, 2, false},                      // 71
    {"IBM01141", 1, 2, false},                      // 72
    {"IBM01142", 1, 2, false},                      // 73
    {"IBM01143", 1, 2, false},                      // 74
    {"IBM01144", 1, 2, false},                      // 75
    {"IBM01145", 1, 2, false},                      // 76
    {"IBM01146", 1, 2, false},                      // 77
    {"IBM01147", 1, 2, false},                      // 78
    {"IBM01148", 1, 2, false},                      // 79
    {"IBM01149", 1, 2, false},                      // 80
    {"IBM1047", 1, 2, false},                       // 81
    {"cp1250", 1, 1, true},                         // 82
    {"cp1251", 1, 1, true},                         // 83
    {"cp1253", 1, 1, false},                        // 84
    {"cp1254", 1, 1, true},                         // 85
    {"cp1255", 1, 1, true},                         // 86
    {"cp1256", 1, 1, true},                         // 87
    {"cp1257", 1, 1, true},                         // 88
    {"cp1258", 1, 2, true},                         // 89
    {"windows-874", 1, 2, false},                   // 90
    {"ibm-1250", 1, 1, true},                       // 91
    {"ibm-5346", 1, 1, true},                       // 92
    {"ibm-1251", 1, 1, true},                       // 93
    {"ibm-5347", 1, 1, true},                       // 94
    {"ibm-1252", 1, 1, true},                       // 95
    {"ibm-5348", 1, 1, true},                       // 96
    {"ibm-1253", 1, 1, true},                       // 97
    {"ibm-5349", 1, 1, true},                       // 98
    {"ibm-1254", 1, 1, true},                       // 99
    {"ibm-5350", 1, 1, true},                       // 100
    {"ibm-9447", 1, 1, true},                       // 101
    {"ibm-5351", 1, 1, true},                       // 102
    {"ibm-9448", 1, 1, true},                       // 103
    {"ibm-5352", 1, 1, true},                       // 104
    {"ibm-9449", 1, 1, true},                       // 105
    {"ibm-5353", 1, 1, true},                       // 106
    {"ibm-1258", 1, 1, true},                       // 107
    {"ibm-5354", 1, 1, true},                       // 108
    {"MS874", 1, 2, false},                         // 109
    {"ibm-874", 1, 2, false},                       // 110
    {"windows-949-2000", 1, 2, false},              // 111
    {"ibm-1363_P11B-1998", 1, 2, false},            // 112
    {"windows-936-2000", 1, 2, false},              // 113
    {"ibm-1386", 1, 2, false},                      // 114
    {"windows-950-2000", 1, 2, false},              // 115
    {"ibm-1373", 1, 2, false},                      // 116
    {"IBM862", 1, 2, false},                        // 117
    {"IBM868", 1, 2, false},                        // 118
}};

// Only the low 16 bits count, so every value that passes CheckEncodingType has a row.
const EncodingRow& Row(EncodingType in_encoding) noexcept {
    return ENCODINGS[static_cast<std::uint16_t>(in_encoding)];
}

}  // namespace

void EncodingInfo::CheckEncodingType(EncodingType in_encoding) {
    if (static_cast<std::uint16_t>(in_encoding) >= ENCODING_COUNT) {
        ORSKA_THROW((TraceSite{"Orska::Support::EncodingInfo::CheckEncodingType",
                               "PlatformAbstraction\\EncodingInfo", 0}),
                    ErrorException(DIAG_GENERAL_ERROR, SUPPORT_ERROR, L"EncodingNotRecog"));
    }
}

const char* EncodingInfo::GetName(EncodingType in_encoding) noexcept {
    return Row(in_encoding).m_name;
}

std::uint8_t EncodingInfo::GetCodeUnitWidth(EncodingType in_encoding) noexcept {
    return Row(in_encoding).m_codeUnitWidth;
}

std::uint8_t EncodingInfo::GetMaxCodeUnitsPerCodePoint(EncodingType in_encoding) noexcept {
    return Row(in_encoding).m_maxCodeUnitsPerCodePoint;
}

bool EncodingInfo::IsAsciiSuperset(EncodingType in_encoding) noexcept {
    return Row(in_encoding).m_isAsciiSuperset;
}

std::uint64_t EncodingInfo::GetWorstCaseByteCount(std::uint64_t in_sourceLength,
                                                  EncodingType in_source,
                                                  EncodingType in_target) noexcept {
    const EncodingRow& target = Row(in_target);
    const unsigned targetBytes =
        unsigned{target.m_maxCodeUnitsPerCodePoint} * target.m_codeUnitWidth;
    // The integer division makes the ratio, and the bound, 0 for wide code units and a narrower
    // worst case.
    const unsigned ratio = targetBytes / Row(in_source).m_codeUnitWidth;
    if (ratio == 0) {
        return 0;
    }
    return in_sourceLength > TOO_LARGE / ratio ? TOO_LARGE : in_sourceLength * ratio;
}

std::uint64_t EncodingInfo::GetWorstCaseCodeUnitCount(std::uint64_t in_codePoints,
                                                      EncodingType in_encoding) noexcept {
    const std::uint64_t most = Row(in_encoding).m_maxCodeUnitsPerCodePoint;
    return in_codePoints > TOO_LARGE / most ? TOO_LARGE : in_codePoints * most;
}

}  // namespace Orska::Support
