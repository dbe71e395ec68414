/// Converts the editor's texts between UTF-8 and UTF-16. The editor does not link the support
/// library; it includes the readers and writers of code points, which are header-only.
#ifndef VELTRANEDIALOG_UTF8_H
#define VELTRANEDIALOG_UTF8_H

#include <string>
#include <string_view>

namespace Veltrane::ODBC {

/// @return false when the bytes are not UTF-8; the output is then unspecified
bool DecodeUtf8(std::string_view in_bytes, std::u16string& out_text);

/// An unpaired surrogate becomes U+FFFD.
std::string EncodeUtf8(std::u16string_view in_text);

}  // namespace Veltrane::ODBC

#endif
