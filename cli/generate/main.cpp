/// veltrane-dsn-generate: writes the man page or a shell's completion when the tool is built.
#include <iostream>
#include <map>

#include "cli/generate/Generate.h"

int main(int in_count, char** in_arguments) {
    using namespace Veltrane::Cli;
    const std::map<std::string, std::string (*)()> makers = {{"man", MakeManualPage},
                                                             {"bash", MakeBashCompletion},
                                                             {"zsh", MakeZshCompletion},
                                                             {"fish", MakeFishCompletion}};
    const auto maker = makers.find(in_count == 2 ? in_arguments[1] : "");
    if (maker == makers.end()) {
        std::cerr << "Usage: veltrane-dsn-generate man|bash|zsh|fish\n";
        return 2;
    }
    std::cout << maker->second() << std::flush;
    return std::cout ? 0 : 1;
}
