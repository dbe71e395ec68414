/// Copies access lists and extended attributes from one open file to another (Linux).
#ifndef SETUP_FILEATTRIBUTES_H
#define SETUP_FILEATTRIBUTES_H

namespace Veltrane::ODBC::FileAttributes {

struct CopyResult {
    const char* m_failed = nullptr;  ///< the step that failed, as an error text; null for none
    int m_error = 0;                 ///< errno
    bool m_isSet = false;            ///< the list was copied
};

/// Copies the access list. If the old file has none, removes an inherited one.
CopyResult CopyAccessList(int in_from, int in_to);
/// Copies the attributes that users and security policies have set. A file without them is usable,
/// except for the access list of a network file system, which a change of the mode can change.
CopyResult CopyExtendedAttributes(int in_from, int in_to);

}  // namespace Veltrane::ODBC::FileAttributes

#endif
