// What sets operator new to fail, in a program one of whose sources includes failing_new.hpp.
#pragma once

#include <cstddef>

// How many allocations are left until one fails; 0: none fails.
inline size_t allocations_to_failure = 0;
