/// A platform string converter that records what it is asked and answers with fixed results.
#ifndef TESTS_SUPPORT_STRINGCONVERTER_FAKE_H
#define TESTS_SUPPORT_STRINGCONVERTER_FAKE_H

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "PlatformAbstraction/strings/IPlatformStringConverter.h"
#include "PlatformAbstraction/strings/ProcessEncodings.h"
#include "PlatformAbstraction/strings/orska_wstring.h"

namespace Orska::Test {

/// Installs itself for its lifetime.
class FakeStringConverter : public Support::IPlatformStringConverter {
public:
    FakeStringConverter() { Support::SetPlatformStringConverter(this); }
    ~FakeStringConverter() override { Support::SetPlatformStringConverter(nullptr); }

    void ConvertToWString(const char* in_bytes, std::int64_t in_byteLength,
                          Support::EncodingType in_encoding,
                          Support::orska_wstring& out_result) override {
        Record("to", in_byteLength, in_encoding);
        m_bytes.assign(in_bytes, static_cast<std::size_t>(in_byteLength));
        out_result.SetImpl(new icu::UnicodeString(u"converted"));
    }

    std::int64_t GetLengthInBytes(const Support::orska_wstring&,
                                  Support::EncodingType in_encoding) override {
        Record("length", m_length, in_encoding);
        return m_length;
    }

    std::int64_t ConvertFromWString(const Support::orska_wstring&, char* out_buffer,
                                    std::int64_t in_bufferLength,
                                    Support::EncodingType in_encoding) override {
        Record("from", in_bufferLength, in_encoding);
        std::fill_n(out_buffer, in_bufferLength, 'x');
        return m_written;
    }

    std::int64_t GetNulTerminatedStringLength(const char*, Support::EncodingType) override {
        return 0;
    }

    std::vector<std::string> m_calls;  ///< such as "to 3 0": what, bytes, encoding
    std::string m_bytes;               ///< what the last conversion to a string was given
    std::int64_t m_length = 8;
    std::int64_t m_written = 8;

private:
    void Record(const char* in_what, std::int64_t in_bytes, Support::EncodingType in_encoding) {
        m_calls.push_back(std::string(in_what) + " " + std::to_string(in_bytes) + " " +
                          std::to_string(static_cast<int>(in_encoding)));
    }
};

}  // namespace Orska::Test

#endif
