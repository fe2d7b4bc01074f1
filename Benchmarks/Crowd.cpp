// vantoro_crowd N -- COMMAND…: runs the command among N sleeping processes and gives its exit status.

#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

int main(int argc, char** argv) {
    if (argc < 4 || std::strcmp(argv[2], "--") != 0) {
        std::fputs("usage: vantoro_crowd N -- COMMAND...\n", stderr);
        return 2;
    }
    std::vector<pid_t> crowd;
    for (long left = std::strtol(argv[1], nullptr, 10); left > 0; --left) {
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::prctl(PR_SET_PDEATHSIG, SIGKILL);
            while (true)
                ::pause();
        }
        if (pid > 0)
            crowd.push_back(pid);
    }
    const pid_t command = ::fork();
    if (command == 0) {
        ::execvp(argv[3], argv + 3);
        std::perror(argv[3]);
        ::_exit(127);
    }
    int status = 0;
    ::waitpid(command, &status, 0);
    for (const pid_t pid : crowd)
        ::kill(pid, SIGKILL);
    for (const pid_t pid : crowd)
        ::waitpid(pid, nullptr, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : EXIT_FAILURE;
}
