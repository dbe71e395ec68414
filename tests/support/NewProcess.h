/// Runs work in a copy of this process that must change nothing here, or must find no cached state.
#ifndef TESTS_SUPPORT_NEWPROCESS_H
#define TESTS_SUPPORT_NEWPROCESS_H

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

namespace Veltrane::Test {

/// Returns the result of the work in a new process, with "(died)" if that process died.
inline std::string InNewProcess(const std::function<std::string()>& in_work) {
    std::FILE* const file = std::tmpfile();
    const pid_t child = fork();
    if (child == 0) {
        const std::string text = in_work();
        std::fwrite(text.data(), 1, text.size(), file);
        _exit(std::fclose(file) == 0 ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    std::string text;
    std::rewind(file);
    for (int c; (c = std::fgetc(file)) != EOF;) text += static_cast<char>(c);
    std::fclose(file);
    return status == 0 ? text : text + "(died)";
}

}  // namespace Veltrane::Test

#endif
