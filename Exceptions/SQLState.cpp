#include "Exceptions/SQLState.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <string_view>

#include "PlatformAbstraction/base/Ascii.h"

namespace Orska::Support {

namespace {

constexpr const char* SQLSTATES[] = {
    "01000", "01001", "01002", "01003", "01004", "01006", "01007", "01S00", "01S01", "01S02",
    "01S05", "01S06", "01S07", "01S08", "01S09", "07001", "07002", "07005", "07006", "07009",
    "07S01", "08001", "08002", "08003", "08004", "08007", "08S01", "21000", "21S01", "21S02",
    "22001", "22002", "22003", "22007", "22008", "22012", "22015", "22018", "22019", "22025",
    "22026", "23000", "24000", "25000", "25S01", "25S02", "25S03", "28000", "34000", "3C000",
    "3D000", "3F000", "40001", "40002", "40003", "42000", "42S01", "42S02", "42S11", "42S12",
    "42S21", "42S22", "44000", "HY000", "HY001", "HY003", "HY004", "HY007", "HY008", "HY009",
    "HY010", "HY011", "HY012", "HY013", "HY014", "HY015", "HY016", "HY017", "HY018", "HY019",
    "HY020", "HY021", "HY024", "HY090", "HY091", "HY092", "HY095", "HY096", "HY097", "HY098",
    "HY099", "HY100", "HY101", "HY103", "HY104", "HY105", "HY106", "HY107", "HY109", "HY110",
    "HY111", "HYC00", "HYT00", "HYT01", "IM007", "IM008", "IM009",
};
static_assert(std::size(SQLSTATES) == DIAG_STATE_COUNT);

}  // namespace

SQLState::SQLState(DiagState in_state) noexcept {
    const bool isLegal = in_state >= 0 && in_state < DIAG_STATE_COUNT;
    std::memcpy(m_text, SQLSTATES[isLegal ? in_state : DIAG_GENERAL_ERROR], LENGTH);
}

SQLState::SQLState(const std::string& in_text) noexcept {
    std::memcpy(m_text, "00000", LENGTH);
    const std::string_view text = Trim(in_text);
    std::copy_n(text.begin(), std::min<std::size_t>(text.size(), LENGTH), m_text);
}

bool SQLState::IsSet() const noexcept {
    return std::any_of(std::begin(m_text), std::end(m_text),
                       [](char in_character) { return in_character != 0; });
}

}  // namespace Orska::Support
