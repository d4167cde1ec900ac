// The `pagewell` command: it sets how the C library's allocator takes memory from the system, then
// becomes the application itself (same process, same arguments). Only the loader reads that
// setting, as a process starts, so the application cannot set it for itself.
//
// Large blocks are then backed by huge pages: one page fault per 2 MiB instead of one per 4 KiB.
// Opening a 10 MB document copies its text several times on its way to the editor page, each copy
// into fresh memory; on a virtual machine, where a page fault is dear, those faults cost the start
// a quarter of a second. The web engine's processes inherit the setting.
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <unistd.h>

namespace {

// Huge pages for the allocator's large blocks, added to whatever tunables are already set.
void askForHugePages()
{
    constexpr const char *tunable = "glibc.malloc.hugetlb";
    const char *current = std::getenv("GLIBC_TUNABLES");
    std::string value = current ? current : "";
    if (value.find(tunable) != std::string::npos)
        return; // chosen by whoever started us
    if (!value.empty())
        value += ':';
    value += tunable;
    value += "=1";
    ::setenv("GLIBC_TUNABLES", value.c_str(), 1);
}

// The application beside this command: in libexec once installed, in the same folder in a build.
std::string application()
{
    char self[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", self, sizeof self - 1);
    if (length <= 0)
        return {};
    std::string folder(self, static_cast<size_t>(length));
    folder.erase(folder.rfind('/'));
    for (const char *relative : {"/../libexec/pagewell-app", "/pagewell-app"}) {
        const std::string path = folder + relative;
        if (::access(path.c_str(), X_OK) == 0)
            return path;
    }
    return {};
}

} // namespace

int main(int, char *argv[])
{
    const std::string path = application();
    if (path.empty()) {
        std::fprintf(stderr,
                     "Pagewell ne peut pas démarrer : l'application est introuvable à côté "
                     "de la commande pagewell.\n");
        return 127;
    }
    askForHugePages();
    ::execv(path.c_str(), argv);
    std::fprintf(stderr, "Pagewell ne peut pas démarrer : %s (%s).\n", path.c_str(),
                 std::strerror(errno));
    return 126;
}
