#include "directory.hpp"

#include <cerrno>
#include <charconv>
#include <climits>
#include <cstdio>
#include <cstring>
#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

#include "log.hpp"
#include "settings.hpp"
#include "system.hpp"

namespace vorinfra {

namespace {

constexpr char sap_prefix[] = "/sap-";
constexpr size_t longest_name = sizeof "/konfd.socket"; // of a file in it
constexpr size_t longest_directory = socket_path_size - longest_name;
static_assert(sizeof "/sap-65535" <= longest_name);

// The given path, else that of the environment, without trailing slashes, since a symbolic link before one would be
// followed.
bool directory_path(char (&path)[socket_path_size], const char* given)
{
    int length;
    const char* origin = given != nullptr ? "the directory" : "VORINFRA_DIR";
    if (const char* const directory = given != nullptr ? given : setting(origin)) {
        length = snprintf(path, sizeof path, "%s", directory);
    } else if (const char* const runtime = setting(origin = "XDG_RUNTIME_DIR")) {
        length = snprintf(path, sizeof path, "%s/vorinfra", runtime);
    } else {
        length = snprintf(path, sizeof path, "/tmp/vorinfra-%u", static_cast<unsigned>(geteuid()));
    }
    if (path[0] != '/') {
        report("%s must be an absolute path, not \"%s\"", origin, given != nullptr ? given : setting(origin));
        return false;
    }
    if (static_cast<size_t>(length) < sizeof path) {
        while (length > 1 && path[length - 1] == '/') {
            path[--length] = '\0';
        }
    }
    if (static_cast<size_t>(length) > longest_directory) {
        report("%s must have at most %zu characters, not %d: %s", origin, longest_directory, length,
               given != nullptr ? given : setting(origin));
        return false;
    }
    return true;
}

// What is to be used, and how to use another one.
struct Place {
    const char* kind;
    const char* path;
    const char* remedy;
};

// The owner of the root directory can replace anything anyway; in some containers that is a number that stands for
// root's.
bool is_trusted(uid_t owner)
{
    struct stat root;
    return owner == 0 || owner == geteuid() || (stat("/", &root) == 0 && owner == root.st_uid);
}

// Whether nobody else can change what is in a directory on the way, or where a link leads.
bool is_safe(const char* step, const struct stat& status, const Place& place)
{
    const bool directory = S_ISDIR(status.st_mode);
    if ((directory || S_ISLNK(status.st_mode)) && !is_trusted(status.st_uid)) {
        report("cannot use the %s %s: %s belongs to user %u, who could replace it; %s", place.kind, place.path, step,
               static_cast<unsigned>(status.st_uid), place.remedy);
        return false;
    }
    if (directory && (status.st_mode & S_IWOTH) != 0 && (status.st_mode & S_ISVTX) == 0) {
        report("cannot use the %s %s: others can rename entries in %s (mode %04o, not sticky); %s", place.kind,
               place.path, step, static_cast<unsigned>(status.st_mode & 07777), place.remedy);
        return false;
    }
    return true;
}

// Puts where a link leads in place of the first `end` characters.
bool follow(char (&way)[PATH_MAX], size_t end)
{
    char target[PATH_MAX];
    char rest[PATH_MAX];
    strcpy(rest, way + end);
    way[end] = '\0';
    const ssize_t size = readlink(way, target, sizeof target - 1);
    target[size > 0 ? size : 0] = '\0';
    char* const name = target[0] == '/' ? way : strrchr(way, '/') + 1;
    const auto room = static_cast<size_t>(way + sizeof way - name);
    return static_cast<size_t>(snprintf(name, room, "%s%s", target, rest)) < room;
}

// Whether only this user and root can change what an absolute path of this length leads to. What does not exist is
// left to whoever opens it.
bool leads_safely(const Place& place, size_t length)
{
    constexpr int most_links = 40;
    char way[PATH_MAX];
    snprintf(way, sizeof way, "%.*s", static_cast<int>(length), place.path);
    int links = 0;
    for (size_t end = 1;; end += 1 + strcspn(way + end + 1, "/")) {
        const char behind = std::exchange(way[end], '\0');
        struct stat status;
        if (lstat(way, &status) != 0) {
            return true;
        }
        if (!is_safe(way, status, place)) {
            return false;
        }
        way[end] = behind;
        if (S_ISLNK(status.st_mode)) {
            if (++links > most_links || !follow(way, end)) {
                report("cannot use the %s %s: %s", place.kind, place.path, strerror(ELOOP));
                return false;
            }
            end = 0;
        } else if (behind == '\0') {
            return true;
        }
    }
}

} // namespace

int open_directory(char (&path)[socket_path_size], const char* given)
{
    if (!directory_path(path, given)) {
        return -1;
    }
    const auto parent = static_cast<size_t>(strrchr(path, '/') + 1 - path);
    const char* const remedy = given != nullptr ? "use another directory" : "set VORINFRA_DIR to another directory";
    if (!leads_safely({"directory", path, remedy}, parent)) {
        return -1;
    }
    if (mkdir(path, 0700) != 0 && errno != EEXIST) {
        report("cannot create the directory %s: %s", path, strerror(errno));
        return -1;
    }
    Descriptor directory(open(path, O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    struct stat status;
    if (!directory || fstat(directory.get(), &status) != 0) {
        const bool link = lstat(path, &status) == 0 && S_ISLNK(status.st_mode);
        report("cannot use the directory %s: %s", path, link ? "it is a symbolic link" : strerror(errno));
        return -1;
    }
    if (status.st_uid != geteuid()) {
        report("cannot use the directory %s: it belongs to user %u, not to user %u", path,
               static_cast<unsigned>(status.st_uid), static_cast<unsigned>(geteuid()));
        return -1;
    }
    if ((status.st_mode & 0777) != 0700) {
        report("cannot use the directory %s: its mode must be 0700, not %04o", path,
               static_cast<unsigned>(status.st_mode & 07777));
        return -1;
    }
    return directory.release();
}

sockaddr_un sap_address(const char* directory, vor_uint16 sap)
{
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    char* const number = stpcpy(stpcpy(address.sun_path, directory), sap_prefix);
    *std::to_chars(number, address.sun_path + socket_path_size, sap).ptr = '\0';
    return address;
}

} // namespace vorinfra

const char* vorinfra_directory(void)
{
    static thread_local char path[vorinfra::socket_path_size];
    const vorinfra::Descriptor directory(vorinfra::open_directory(path));
    return directory ? path : nullptr;
}

int vorinfra_rooted_path(const char* path, char* buffer, unsigned size)
{
    constexpr char remedy[] = "set VORINFRA_ROOT to another directory";
    const char* root = path[0] == '/' ? vorinfra::setting("VORINFRA_ROOT") : nullptr;
    const bool rooted = root != nullptr;
    if (rooted && root[0] != '/') {
        vorinfra::report("VORINFRA_ROOT must be an absolute path, not \"%s\"", root);
        return -1;
    }
    if (!rooted && path[0] == '/') { // in the gateway's directory
        root = vorinfra_directory();
        path = strrchr(path, '/');
        if (root == nullptr) {
            return -1;
        }
    }
    size_t length = root != nullptr ? strlen(root) : 0;
    while (length > 0 && root[length - 1] == '/') {
        length--;
    }
    if (length + strlen(path) >= size) {
        vorinfra::report("the path %s%s must have at most %u characters", root != nullptr ? root : "", path,
                         size > 0 ? size - 1 : 0);
        return -1;
    }
    memcpy(buffer, root != nullptr ? root : "", length);
    strcpy(buffer + length, path);
    return !rooted || vorinfra::leads_safely({"socket", buffer, remedy}, strlen(buffer)) ? 0 : -1;
}
