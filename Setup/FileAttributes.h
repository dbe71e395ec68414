/// What belongs to a file beside its bytes, owner and mode (Linux), given to another one by open
/// handles of both.
#ifndef SETUP_FILEATTRIBUTES_H
#define SETUP_FILEATTRIBUTES_H

namespace Veltrane::ODBC::FileAttributes {

struct CopyResult {
    const char* m_failed = nullptr;  ///< what could not be done, for people; null for nothing
    int m_error = 0;                 ///< errno
    bool m_isSet = false;            ///< there was one, and the other file has it now
};

/// The access list, or that there is none.
CopyResult CopyAccessList(int in_from, int in_to);
/// Those that users and the system's policy have set. A file without them is usable, except the
/// access list of a network file system, which changing the mode may have changed.
CopyResult CopyExtendedAttributes(int in_from, int in_to);

}  // namespace Veltrane::ODBC::FileAttributes

#endif
