/// Counted start-up and shut-down of the support library, and the verbose trace that start-up turns
/// on. A driver holds a PlatformGuard while it works.
///
/// Start and stop from one thread, before other threads use strings and after they have ended: no
/// lock is taken. The first start reads the two process encodings from the settings, if there are
/// any (call OrskaSettingReader::Initialize before), and installs the string converter; without
/// settings the encodings are their defaults. A second start only counts.
#ifndef PLATFORMABSTRACTION_PLATFORM_H
#define PLATFORMABSTRACTION_PLATFORM_H

#include <memory>
#include <mutex>

#include "ICU/WideStringConverter.h"
#include "base/VerboseTrace.h"
#include "strings/orska_wstring.h"

namespace Orska::Platform {

/// A recursive mutex.
class PlatformLock {
public:
    virtual ~PlatformLock() = default;
    void Lock() { m_mutex.lock(); }
    void Unlock() { m_mutex.unlock(); }

private:
    std::recursive_mutex m_mutex;
};

/// The base of platform services; there are none.
class PlatformService {
public:
    virtual ~PlatformService() = default;
};

/// The state of a started platform. The functions below make and destroy it.
class PlatformInstance {
public:
    PlatformInstance();
    PlatformInstance(const PlatformInstance&) = delete;
    PlatformInstance& operator=(const PlatformInstance&) = delete;
    virtual ~PlatformInstance();

    PlatformLock& GetLock() noexcept { return *m_lock; }
    /// The converter of every string while the platform is started.
    Support::WideStringConverter& GetStringConverter() noexcept { return *m_stringConverter; }
    /// The name of ICU's default locale when the platform was started.
    const Support::orska_wstring& GetDefaultLocale() const noexcept { return m_defaultLocale; }
    bool IsStarted() const noexcept { return m_isStarted; }

private:
    std::unique_ptr<PlatformLock> m_lock;
    std::unique_ptr<Support::WideStringConverter> m_stringConverter;
    std::unique_ptr<PlatformService> m_service;
    Support::orska_wstring m_defaultLocale;
    bool m_isStarted = true;
};

/// Starts the platform, or counts one more user of the started one.
/// @param in_isVerbose  a first start sets the verbose trace as given; a further start can only
///        turn it on
/// @return the platform object, owned by the library
/// @throws StartupInitException for an encoding setting that is not legal; the platform is then not
///         started, and both encodings are as before
PlatformInstance* InitializePlatform(bool in_isVerbose);

/// Counts one user less; the last one destroys the platform object and removes the string
/// converter. Call it once for each InitializePlatform: a further call wraps the count.
void UninitializePlatform();

/// One user of the started platform: the constructor starts it, the destructor stops it.
///
///     Orska::Platform::PlatformGuard platform;
///     Orska::Support::ODBCStringConverter converter(platform);
class PlatformGuard {
public:
    /// As InitializePlatform, exceptions included.
    explicit PlatformGuard(bool in_isVerbose = false)
        : m_instance(*InitializePlatform(in_isVerbose)) {}
    PlatformGuard(const PlatformGuard&) = delete;
    PlatformGuard& operator=(const PlatformGuard&) = delete;
    ~PlatformGuard() { UninitializePlatform(); }

    /// Owned by the library.
    PlatformInstance& GetInstance() const noexcept { return m_instance; }
    /// The converter of every string, for objects that are constructed from it.
    operator Support::WideStringConverter&() const noexcept {
        return m_instance.GetStringConverter();
    }

private:
    PlatformInstance& m_instance;
};

}  // namespace Orska::Platform

#endif
