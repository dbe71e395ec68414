/// The differences between the systems in the tool's advice and in paths.
#ifndef CLI_PLATFORMWORDS_H
#define CLI_PLATFORMWORDS_H

#include <string>

namespace Veltrane::Cli {

struct PlatformWords {
    const char* m_exampleSetup;   ///< a path of the setup library
    const char* m_exampleDriver;  ///< a path of a driver
    const char* m_absolutePath;   ///< how an absolute path begins: "has to begin with a slash"
    const char* m_missingDependencyRepair;  ///< after "Install the package that contains X"
    const char* m_missingSymbolRepair;
    const char* m_loaderRepair;
    const char* m_notWritableRepair;    ///< for the file or key of the DSNs
    const char* m_driverManagerRepair;  ///< if no driver manager can be loaded
    /// Whether another driver manager of this system takes ";" and "#" in a value for a comment.
    bool m_hasCommentsInValues;
    /// Whether the installer adds no DSN of a driver that is registered without its library.
    bool m_needsDriverLibrary;
};

extern const PlatformWords PLATFORM_WORDS;

bool IsAbsolutePath(const std::string& in_path);
/// Whether a path exists: a file, or a registry key.
bool IsThere(const std::string& in_path);

}  // namespace Veltrane::Cli

#endif
