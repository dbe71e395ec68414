#include "Setup/InstallerLibrary.h"

#include <dlfcn.h>
#include <link.h>

#include <array>
#include <cstdio>
#include <utility>

#include "Setup/SystemCalls.h"

namespace Veltrane::ODBC {

namespace {

constexpr const char* LIBRARY_NAMES[] = {"libodbcinst.so.2", "libiodbcinst.so.2"};
constexpr char NOT_INSTALLED[] =
    "The ODBC installer DLL (ODBCCP32.DLL) is not installed on this system.";
constexpr char NOT_INSTALLED_TITLE[] = "ODBC Installer Error";
constexpr char ANY_FUNCTION[] = "SQLPostInstallerError";
constexpr short SQL_SUCCESS = 0;

template <typename Function>
void Bind(void* in_library, const char* in_name, Function& out_function) {
    out_function = reinterpret_cast<Function>(dlsym(in_library, in_name));
}

InstallerLibrary BindAll(void* in_library) {
    InstallerLibrary library;
    Bind(in_library, "SQLValidDSN", library.m_validDSN);
    Bind(in_library, "SQLPostInstallerError", library.m_postInstallerError);
    Bind(in_library, "SQLGetConfigMode", library.m_getConfigMode);
    Bind(in_library, "_odbcinst_UserINI", library.m_userIni);
    Bind(in_library, "_odbcinst_SystemINI", library.m_systemIni);
    Bind(in_library, "SQLWritePrivateProfileString", library.m_writeProfileString);
    Bind(in_library, "__clear_ini_cache", library.m_clearCache);
    Bind(in_library, "__SQLGetPrivateProfileStringNL", library.m_readWithoutLock);
    if (library.m_systemIni == nullptr) library.m_driverManager = DriverManager::IODBC;
    return library;
}

/// Opens a module that is already loaded. The main program has no name.
void* OpenLoaded(const char* in_name) {
    const bool isMainProgram = in_name == nullptr || *in_name == '\0';
    return dlopen(isMainProgram ? nullptr : in_name, RTLD_NOW | RTLD_LOCAL | RTLD_NOLOAD);
}

/// Opens the module that contains an address; returns null when there is none.
void* OpenModuleOf(const void* in_address) {
    Dl_info info{};
    void* module = nullptr;
    if (dladdr1(in_address, &info, &module, RTLD_DL_LINKMAP) == 0) return nullptr;
    return OpenLoaded(static_cast<const link_map*>(module)->l_name);
}

/// The libraries bound so far, one for each driver manager in the process.
/// Process-wide: filled at each caller's first call, read by every request.
class BoundLibraries {
public:
    /// @param in_function  a function of the library
    /// @return null when the table is full
    const InstallerLibrary* Get(const void* in_function) {
        const SystemCalls::ForkLock lock;
        for (std::size_t i = 0; i < m_count; ++i) {
            if (m_entries[i].m_function == in_function) return &m_entries[i].m_library;
        }
        void* const handle = m_count < m_entries.size() ? OpenModuleOf(in_function) : nullptr;
        if (handle == nullptr) return nullptr;
        m_entries[m_count] = {in_function, BindAll(handle)};
        return &m_entries[m_count++].m_library;
    }

private:
    struct Entry {
        const void* m_function = nullptr;
        InstallerLibrary m_library;
    };

    std::array<Entry, 4> m_entries;
    std::size_t m_count = 0;
};

constinit BoundLibraries s_boundLibraries;

/// The library of this thread's request, else that of the process; null before its first use.
thread_local const InstallerLibrary* t_library = nullptr;

InstallerLibrary LoadAny() {
    for (const char* name : LIBRARY_NAMES) {
        if (void* const handle = OpenLoaded(name)) return BindAll(handle);
    }
    for (const char* name : LIBRARY_NAMES) {
        if (void* const handle = dlopen(name, RTLD_NOW | RTLD_LOCAL)) return BindAll(handle);
    }
    std::fprintf(stderr, "%s: %s\n", NOT_INSTALLED_TITLE, NOT_INSTALLED);
    return {};
}

/// Texts of posted errors. iODBC stores only the pointer, so they have to outlive the call.
/// Process-wide: written when an error is posted, under the lock of forks; read by the library
/// until it empties its list.
class PostedTexts {
public:
    const char* Keep(const std::string& in_text) {
        std::string& place = m_texts[m_next++ % m_texts.size()];
        place = in_text;
        return place.c_str();
    }

private:
    /// Several times the eight errors that the library keeps for all threads together.
    std::array<std::string, 64> m_texts;
    std::size_t m_next = 0;
};

PostedTexts& GetPostedTexts() {
    // Never destroyed: the library can be asked for its errors until the process ends.
    static PostedTexts& s_texts = *new PostedTexts;
    return s_texts;
}

/// Every call except posting an error empties the list.
void EmptyErrorList(const InstallerLibrary& in_library) {
    if (in_library.m_validDSN != nullptr) in_library.m_validDSN("-");
}

}  // namespace

const InstallerLibrary* FindInstallerLibrary(const void* in_code) noexcept {
    void* const module = OpenModuleOf(in_code);
    if (module == nullptr) return nullptr;
    // Searches the module and the libraries that it is linked with.
    const void* const function = dlsym(module, ANY_FUNCTION);
    const InstallerLibrary* const library =
        function == nullptr ? nullptr : s_boundLibraries.Get(function);
    dlclose(module);
    return library;
}

const InstallerLibrary* UseInstallerLibrary(const InstallerLibrary* in_library) noexcept {
    return std::exchange(t_library, in_library);
}

const InstallerLibrary& GetInstallerLibrary() noexcept {
    if (t_library != nullptr) return *t_library;
    // A child that is forked during the first call would find the object half made for ever.
    const SystemCalls::ForkLock lock;
    // Process-wide: set on first use, never changed.
    static const InstallerLibrary s_library = LoadAny();
    return *(t_library = &s_library);
}

bool PostError(unsigned in_code, const std::string& in_text) {
    const InstallerLibrary& library = GetInstallerLibrary();
    if (library.m_postInstallerError == nullptr) return false;
    const bool isKept = library.m_driverManager == DriverManager::UNIXODBC;
    const SystemCalls::ForkLock lock;
    const char* const text = isKept ? in_text.c_str() : GetPostedTexts().Keep(in_text);
    return library.m_postInstallerError(in_code, text) == SQL_SUCCESS;
}

void ForgetReadValues() {
    const InstallerLibrary& library = GetInstallerLibrary();
    // iODBC keeps no values between its calls.
    if (library.m_driverManager == DriverManager::IODBC) return;
    const SystemCalls::ForkLock lock;
    if (library.m_clearCache != nullptr) {
        library.m_clearCache();
    } else if (library.m_writeProfileString != nullptr && library.m_readWithoutLock == nullptr) {
        // Versions that do not export the function call it after each write. This write removes a
        // section from a file that has none.
        const bool isDone = library.m_writeProfileString("-", nullptr, nullptr, "/dev/null") != 0;
        if (!isDone) EmptyErrorList(library);
    }
}

void ClearInstallerErrors() {
    const InstallerLibrary& library = GetInstallerLibrary();
    const SystemCalls::ForkLock lock;
    EmptyErrorList(library);
}

}  // namespace Veltrane::ODBC
