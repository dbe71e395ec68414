/// Shows the editor once and prints its result and texts, for the scripts that drive an editor.
#include <cstdio>
#include <exception>
#include <string>

#include "VeltraneDialog/DialogFields.h"
#include "VeltraneDialog/Utf8.h"
#include "VeltraneDialog/VeltraneDSNDialog.h"

namespace {

using Veltrane::ODBC::DialogString;

void Print(const char* in_key, const DialogString& in_text) {
    std::printf("%s=%s\n", in_key,
                in_text ? Veltrane::ODBC::EncodeUtf8(*in_text).c_str() : "(null)");
}

}  // namespace

int main() {
    try {
        Veltrane::ODBC::VeltraneDSNDialog dialog;
        std::printf("result=%d\n", dialog.ShowDialog());
        Print("DSN", dialog.GetDSN());
        Print("Server", dialog.GetServer());
        Print("Namespace", dialog.GetCognosNamespace());
        Print("LoginMode", dialog.GetMicroStrategyLoginMode());
        Print("UID", dialog.GetUid());
        Print("PWD", dialog.GetPwd());
        Print("Database", dialog.GetDatabase());
        return 0;
    } catch (const std::exception& exception) {
        std::printf("error=%s\n", exception.what());
        return 1;
    }
}
