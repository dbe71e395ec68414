#include "PlatformAbstraction/ICU/StreamConverterFactory.h"

#include "PlatformAbstraction/ICU/Siconv/Transcoder.h"
#include "PlatformAbstraction/ICU/SiconvStreamConverter.h"
#include "PlatformAbstraction/ICU/WideStreamBlitter.h"
#include "PlatformAbstraction/ICU/WideStreamConverter.h"
#include "PlatformAbstraction/strings/EncodingInfo.h"

namespace Orska::Support {

std::unique_ptr<StreamConverter> StreamConverterFactory::CreateConverter(EncodingType in_source,
                                                                         EncodingType in_target,
                                                                         std::uint8_t in_flag) {
    EncodingInfo::CheckEncodingType(in_source);
    EncodingInfo::CheckEncodingType(in_target);
    const bool isCopy = in_source == in_target || (in_source == EncodingType::ENC_US_ASCII &&
                                                   EncodingInfo::IsAsciiSuperset(in_target));
    if (isCopy) {
        return std::make_unique<WideStreamBlitter>(in_source, in_flag);
    }
    const int source = GetTranscoderIndex(in_source);
    const int target = GetTranscoderIndex(in_target);
    if (source < TRANSCODER_NO_INDEX && target < TRANSCODER_NO_INDEX) {
        if (const TranscoderFunction transcoder = GetTranscoder(source, target)) {
            return std::make_unique<SiconvStreamConverter>(in_source, in_target, in_flag,
                                                           transcoder);
        }
    }
    return std::make_unique<WideStreamConverter>(in_source, in_target, in_flag);
}

}  // namespace Orska::Support
