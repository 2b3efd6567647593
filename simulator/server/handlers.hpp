// handlers.hpp: what the commands do.
#pragma once

#include <string>

#include "server/commands.hpp"
#include "server/control.hpp"
#include "server/messages.hpp"
#include "server/recorder.hpp"
#include "server/world.hpp"

namespace vorsim {

class Handlers {
public:
    Handlers(Loop& loop, World& world, Messages& messages, Control& control, const Recorder& recorder)
        : loop_(loop), world_(world), messages_(messages), control_(control), recorder_(recorder)
    {
    }

    // To be told, too.
    void konfd_is_served() { konfd_served_ = true; }

    // The answer; each throws why there is none.
    std::string operator()(const Show& what) const;
    // The state, and beside it who is served and the faults in force.
    std::string operator()(const Overview& what) const;
    std::string operator()(const Reset& what) const;
    std::string operator()(const Load& what) const;
    std::string operator()(const Quit& what) const;
    std::string operator()(const Switch& what) const;

    std::string operator()(const AddFault& fault) const;
    std::string operator()(const ListFaults& what) const;
    std::string operator()(const ClearFaults& fault) const;
    std::string operator()(const StopManager& manager) const;
    std::string operator()(const StartManager& manager) const;
    std::string operator()(const Setting& setting) const;

private:
    Loop& loop_;
    World& world_;
    Messages& messages_;
    Control& control_;
    const Recorder& recorder_;
    bool konfd_served_ = false;
};

} // namespace vorsim
