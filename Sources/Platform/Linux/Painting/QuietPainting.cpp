#include "Platform/QuietPainting.h"

#include <cstddef>
#include <QCoreApplication>
#include <QtGlobal>
#include <QThreadPool>
#include <string_view>
#include <sys/socket.h>
#include <sys/un.h>

// The toolkit hands every shape of more than about a hundred runs of pixels to a pool of threads, in pieces, and waits
// for them: for shapes as small as ours that is several threads woken to do the work of a few microseconds. From 6.5 on
// it can be told not to. Before, it only spares a thread that is itself one of the pool's; so this one says that it is.
// Nothing else in this program asks, and the pool itself stays what it is for whoever else uses it.
#if QT_VERSION < QT_VERSION_CHECK(6, 5, 0)
bool QThreadPool::contains(const QThread* thread) const {
    return QCoreApplication::instance() != nullptr && thread == QCoreApplication::instance()->thread();
}
#endif

namespace vantoro {

namespace {
constexpr auto noFillingThreads = "QT_NO_GUI_THREADPOOL";
constexpr auto noSharedPictures = "QT_XCB_NO_MITSHM";

/// Whether it is a connection to an X server of this machine.
bool leadsToServer(int descriptor) {
    sockaddr_un address{};
    socklen_t length = sizeof address;
    if (::getpeername(descriptor, reinterpret_cast<sockaddr*>(&address), &length) != 0 || address.sun_family != AF_UNIX)
        return false;
    const std::size_t named = length - offsetof(sockaddr_un, sun_path);
    return std::string_view(address.sun_path, named).find("/.X11-unix/") != std::string_view::npos;
}

/// A connection counts as full from a quarter of its size on: two wheels have to fit, or each beat would wait for the
/// server to have read them.
void makeRoomForPictures() {
    constexpr int wanted = 512 * 1024; // the system may grant less
    constexpr int opened = 64;         // what is open so early
    for (int descriptor = 0; descriptor < opened; ++descriptor)
        if (leadsToServer(descriptor))
            ::setsockopt(descriptor, SOL_SOCKET, SO_SNDBUF, &wanted, sizeof wanted);
}
} // namespace

QuietPainting::QuietPainting() {
    qputenv(noFillingThreads, "1");
    // Before it touches a shared picture again the toolkit asks the server whether it has been read, and waits: two
    // more wake-ups for each of thirty pictures a second.
    asksForSending_ = !qEnvironmentVariableIsSet(noSharedPictures);
    if (asksForSending_)
        qputenv(noSharedPictures, "1");
}

QuietPainting::~QuietPainting() {
    // Not for what this program starts.
    if (asksForSending_)
        qunsetenv(noSharedPictures);
    makeRoomForPictures();
}

} // namespace vantoro
