#pragma once

namespace orvo::pos::registers {
// Adds the register and fiscal screens to the ScreenRegistry.
void registerScreens();
} // namespace orvo::pos::registers
