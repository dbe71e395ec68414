#include "cli/examine/LibraryProbe.h"

namespace Veltrane::Cli {

namespace {

/// The text between two marks; empty when one of them is missing.
std::string Between(const std::string& in_text, const std::string& in_begin,
                    const std::string& in_end) {
    const std::size_t begin = in_text.find(in_begin);
    if (begin == std::string::npos) return {};
    const std::size_t from = begin + in_begin.size();
    const std::size_t end = in_end.empty() ? in_text.size() : in_text.find(in_end, from);
    return end == std::string::npos ? std::string() : in_text.substr(from, end - from);
}

}  // namespace

LibraryProbe ClassifyLoaderError(const std::string& in_path, const std::string& in_error) {
    constexpr char NOT_OPENED[] = ": cannot open shared object file";
    const std::size_t notOpened = in_error.find(NOT_OPENED);
    if (notOpened != std::string::npos) {
        const std::string name = in_error.substr(0, notOpened);
        const std::string reason = Between(in_error, std::string(NOT_OPENED) + ": ", "");
        return name == in_path ? LibraryProbe{LibraryFault::NotFound, reason}
                               : LibraryProbe{LibraryFault::MissingDependency, name};
    }
    std::string symbol = Between(in_error, "undefined symbol: ", "");
    if (!symbol.empty()) {
        return {LibraryFault::MissingSymbol, symbol.substr(0, symbol.find(','))};
    }
    const std::string version = Between(in_error, "version `", "' not found");
    if (!version.empty()) return {LibraryFault::MissingSymbol, "version " + version};
    return {LibraryFault::CannotLoad, in_error};
}

}  // namespace Veltrane::Cli
