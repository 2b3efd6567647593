/* konfd_server.hpp: konfd's socket and its clients. */
#pragma once

#include <functional>
#include <map>

#include "konfd_session.hpp"
#include "loop.hpp"
#include "unix_socket.hpp"

namespace vorsim {

class KonfdServer {
public:
    using Report = std::function<void(const konfd::Verdict& verdict)>;

    KonfdServer(Loop& loop, konfd::Konfd& konfd, const std::string& path, Report report);

    std::optional<konfd::Time> deadline() const;
    void keep_time();

private:
    struct Client {
        Descriptor socket;
        konfd::Session session;
    };

    void welcome();
    void hear(int descriptor);
    /* False: the client does not take its answers and was let go. */
    bool answer(int descriptor, const std::vector<konfd::Verdict>& verdicts);
    void part_from(int descriptor);

    Loop& loop_;
    konfd::Konfd& konfd_;
    Listener listener_;
    Report report_;
    std::map<int, Client> clients_;
};

} // namespace vorsim
