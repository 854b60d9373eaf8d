#pragma once

namespace orvo::pos::registers {
// Adds the register screen and the fiscal operations screen to the ScreenRegistry.
void registerScreens();
} // namespace orvo::pos::registers
