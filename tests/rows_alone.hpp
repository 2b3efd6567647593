// rows_alone.hpp: the rows of all families that name a strip, for a program that makes their calls itself.
#pragma once

#include <vector>

#include "calls/calls.hpp"

const std::vector<Row>& rows_alone();
