/// Finds the EncodingType of a name from a setting or from ICU.
///
/// Names are looked up in a map of 131 upper-case names that is built on first use.
#ifndef PLATFORMABSTRACTION_ICU_ICUUTILS_H
#define PLATFORMABSTRACTION_ICU_ICUUTILS_H

#include <string>

#include "../strings/EncodingType.h"

namespace Orska::Support {

class ICUUtils {
public:
    /// The encoding of a name in ASCII, in any case. A name that is not in the map is looked up
    /// through ICU's aliases of it.
    /// @throws ErrorException "EncodingNotRecog" for a name that is in neither
    static EncodingType GetEncodingEnum(const std::string& in_name);

    /// The encoding of a name that is in the map, in any case, or ENC_NONE.
    static EncodingType FindEncoding(const std::string& in_name);
};

}  // namespace Orska::Support

#endif
