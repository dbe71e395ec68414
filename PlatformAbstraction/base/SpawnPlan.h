/// The actions of posix_spawn between fork and exec, after which a program has only one descriptor
/// of the process that starts it (Linux).
#ifndef PLATFORMABSTRACTION_BASE_SPAWNPLAN_H
#define PLATFORMABSTRACTION_BASE_SPAWNPLAN_H

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace Orska::Support {

/// The program inherits no other descriptor, and no blocked or ignored signal.
class SpawnPlan {
public:
    /// @param in_socket  its standard input
    /// @param in_flags  for example POSIX_SPAWN_SETSID
    explicit SpawnPlan(int in_socket, short in_flags = 0) {
        posix_spawn_file_actions_init(&m_actions);
        posix_spawnattr_init(&m_attributes);
        sigset_t signals;
        sigemptyset(&signals);
        Note(posix_spawnattr_setsigmask(&m_attributes, &signals));
        sigfillset(&signals);
        Note(posix_spawnattr_setsigdefault(&m_attributes, &signals));
        const int flags = POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | in_flags;
        Note(posix_spawnattr_setflags(&m_attributes, static_cast<short>(flags)));
        Note(posix_spawn_file_actions_adddup2(&m_actions, in_socket, STDIN_FILENO));
        // Not the host's streams: if it closed them, these numbers can be its data files.
        Note(posix_spawn_file_actions_addopen(&m_actions, STDOUT_FILENO, "/dev/null", O_RDWR, 0));
        Note(posix_spawn_file_actions_adddup2(&m_actions, STDOUT_FILENO, STDERR_FILENO));
        Note(posix_spawn_file_actions_addclosefrom_np(&m_actions, STDERR_FILENO + 1));
    }
    SpawnPlan(const SpawnPlan&) = delete;
    SpawnPlan& operator=(const SpawnPlan&) = delete;
    ~SpawnPlan() {
        posix_spawn_file_actions_destroy(&m_actions);
        posix_spawnattr_destroy(&m_attributes);
    }

    /// @param in_program  its path
    /// @param in_arguments  argv: the program's name and its arguments
    /// @param in_environment  entries, with a null at the end
    /// @return an errno value, 0 for success
    int Spawn(const std::string& in_program, std::vector<std::string> in_arguments,
              char* const* in_environment, pid_t& out_process) const {
        if (m_error != 0) return m_error;
        std::vector<char*> arguments;
        for (std::string& argument : in_arguments) arguments.push_back(argument.data());
        arguments.push_back(nullptr);
        return posix_spawn(&out_process, in_program.c_str(), &m_actions, &m_attributes,
                           arguments.data(), in_environment);
    }

private:
    void Note(int in_error) { m_error = m_error == 0 ? in_error : m_error; }

    posix_spawn_file_actions_t m_actions;
    posix_spawnattr_t m_attributes;
    int m_error = 0;
};

}  // namespace Orska::Support

#endif
