/// Owns a descriptor of a file, socket or process (Linux).
#ifndef VELTRANEDIALOG_FILEDESCRIPTOR_H
#define VELTRANEDIALOG_FILEDESCRIPTOR_H

#include <unistd.h>

namespace Veltrane::ODBC {

class FileDescriptor {
public:
    /// @param in_descriptor  negative: none
    explicit FileDescriptor(int in_descriptor) : m_descriptor(in_descriptor) {}
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;
    ~FileDescriptor() { Close(); }

    int Get() const { return m_descriptor; }

    void Close() {
        if (m_descriptor >= 0) {
            close(m_descriptor);
            m_descriptor = -1;
        }
    }

private:
    int m_descriptor;
};

}  // namespace Veltrane::ODBC

#endif
