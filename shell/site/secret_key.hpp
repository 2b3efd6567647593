// secret_key.hpp: fingerprints of secrets, by which a journal shows that one was changed. They tell nothing to whoever
// does not have the key.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "call/call_key.hpp"

namespace vorcfg::site {

// $VORCFG_SECRET_KEY, else secret-key beside what else vorcfg keeps for its user, or for root in /var/lib/vorcfg-key.
// Empty: there is none.
std::string secret_key_path();

class SecretKey {
public:
    enum class Missing : bool { left, made };

    // `note` gets what a user should know.
    SecretKey(std::string path, std::function<void(const std::string&)> note);

    // The call's key, with the fingerprint of its secrets unless one is not read yet. The file is first needed, and may
    // be made, for the first call that has a secret. Throws an InputError where others could know what is in it.
    call::CallKey key_of(const call::PreparedCall& call, Missing missing);

private:
    void need(Missing missing);

    const std::string path_;
    const std::function<void(const std::string&)> note_;
    std::optional<std::string> key_; // empty: there is none
    bool tried_ = false;             // to make it
};

} // namespace vorcfg::site
