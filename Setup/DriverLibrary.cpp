#include "Setup/DriverLibrary.h"

#include "Setup/Profile.h"

namespace Veltrane::ODBC {

bool HasDriverLibrary(const std::string& in_driver) {
    try {
        const ProfileView drivers = Profile(Profile::Kind::DRIVERS).Read();
        for (const char* const key : {"Driver64", "Driver"}) {
            if (!drivers.Get(in_driver, key).value_or("").empty()) return true;
        }
    } catch (const ProfileError&) {
        // No error to report: no test was requested yet.
    }
    return false;
}

}  // namespace Veltrane::ODBC
