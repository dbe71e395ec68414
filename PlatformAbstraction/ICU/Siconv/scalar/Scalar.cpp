// Every pair, one code point at a time.
#include <cstring>

#include "PlatformAbstraction/ICU/Siconv/TranscoderTable.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Convert.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Readers.h"
#include "PlatformAbstraction/ICU/Siconv/scalar/Writers.h"

namespace Orska::Support::Siconv {

namespace {

template <int SOURCE>
using ReaderOf = TypeOf<SOURCE, Utf8Reader, Utf16Reader<IS_BIG_ENDIAN<SOURCE>>,
                        Utf32Reader<IS_BIG_ENDIAN<SOURCE>>,
                        std::conditional_t<SOURCE == LATIN1, Latin1Reader, Cp1252Reader>>;
template <int TARGET>
using WriterOf = TypeOf<TARGET, Utf8Writer, Utf16Writer<IS_BIG_ENDIAN<TARGET>>,
                        Utf32Writer<IS_BIG_ENDIAN<TARGET>>, SingleByteWriter>;

struct ScalarForm {
    template <int SOURCE, int TARGET>
    static std::int32_t Convert(TranscoderSource& io_source, TranscoderTarget& io_target) {
        return ConvertCodePoints<ReaderOf<SOURCE>, WriterOf<TARGET>>(io_source, io_target);
    }
};

}  // namespace

constexpr TranscoderTable SCALAR_TABLE = MakeTranscoderTable<ScalarForm>();

std::int32_t CopyBytes(TranscoderSource& io_source, TranscoderTarget& io_target) {
    const std::uint64_t wanted = io_source.m_length - io_source.m_position;
    const std::uint64_t room = io_target.m_length - io_target.m_position;
    const std::uint64_t count = wanted < room ? wanted : room;
    if (count > 0) {
        std::memcpy(io_target.m_data + io_target.m_position,
                    io_source.m_data + io_source.m_position, count);
    }
    io_source.m_position += count;
    io_target.m_position += count;
    return count == wanted ? TRANSCODER_DONE : TRANSCODER_FULL;
}

}  // namespace Orska::Support::Siconv
