#pragma once

namespace orvo::shell {
// Registers the shell's own screens that menu nodes open: frmConfServidor (change mode),
// frmCambiarClave, frmControlAcceso, frmCalculadora, frmAcercaDe.
void registerShellScreens();
} // namespace orvo::shell
