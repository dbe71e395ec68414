/// Who can read and write a file.
#ifndef CLI_FILERIGHTS_H
#define CLI_FILERIGHTS_H

#include <string>

namespace Veltrane::Cli {

struct FileRights {
    bool m_isReadByOthers = false;     ///< by anybody except its owner and its group
    bool m_isReadByGroup = false;      ///< by its group, or by others in its access list
    bool m_isWrittenByOthers = false;  ///< by anybody except its owner
    std::string m_mode;                ///< octal, "0644"
};

FileRights GetFileRights(const std::string& in_path);

/// True for the administrator, who can change the system's files.
bool IsAdministrator();

}  // namespace Veltrane::Cli

#endif
