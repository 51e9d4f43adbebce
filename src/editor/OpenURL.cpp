// Addresses open through the desktop's own opener. The child is started with posix_spawn (no
// fork of the host's threads) and reaped by a short-lived thread, so no zombie is left behind.
#include <spawn.h>
#include <sys/wait.h>

#include <string>
#include <thread>

#include "editor/IGraphics.h"

extern char** environ;

bool OpenURLInBrowser(const std::string& url)
{
    if (url.empty()) return false;
    pid_t pid = 0;
    const char* argv[] = {"xdg-open", url.c_str(), nullptr};
    if (posix_spawnp(&pid, "xdg-open", nullptr, nullptr, const_cast<char* const*>(argv), environ) != 0)
        return false;
    std::thread(
        [pid]
        {
            int status = 0;
            waitpid(pid, &status, 0);
        })
        .detach();
    return true;
}
