/// Encoding names: from a name, as a setting or ICU gives it, to an EncodingType.
///
/// Names are looked up in a map of 131 upper-case names that is built on first use.
#ifndef PLATFORMABSTRACTION_ICU_ICUUTILS_H
#define PLATFORMABSTRACTION_ICU_ICUUTILS_H

#include <string>

#include "../strings/EncodingType.h"

namespace Orska::Support {

class ICUUtils {
public:
    /// The encoding of a name in ASCII, in any case; a name that is not in the map itself is found
    /// through ICU's aliases of it.
    /// @throws ErrorException "EncodingNotRecog" for a name that neither knows
    static EncodingType GetEncodingEnum(const std::string& in_name);

    /// The encoding of a name that is in the map, in any case, or ENC_NONE.
    static EncodingType FindEncoding(const std::string& in_name);
};

}  // namespace Orska::Support

#endif
