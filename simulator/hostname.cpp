#include "families.hpp"

namespace vorsim {
namespace {

constexpr Call calls[] = {
    {tells(10, 0xa00a), "vor_cfg_set_plat_hostname", "gateway", chain(text(3, "hostname"))},
};

} // namespace

const Family hostname{"hostname", calls};

} // namespace vorsim
