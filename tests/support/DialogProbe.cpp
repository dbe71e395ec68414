/// Shows the editor once, for a picture of it, or prints why it cannot.
#include <cstdio>
#include <exception>

#include "VeltraneDialog/VeltraneDSNDialog.h"

int main() {
    try {
        Veltrane::ODBC::VeltraneDSNDialog().ShowDialog();
        return 0;
    } catch (const std::exception& exception) {
        std::printf("error=%s\n", exception.what());
        return 1;
    }
}
