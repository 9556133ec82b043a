#!/bin/sh
# Starts the installed nox-dap for VS Code: $NOX_DAP when set, else nox-dap on the PATH,
# else the default install prefix.
if [ -n "$NOX_DAP" ]; then exec "$NOX_DAP" "$@"; fi
if command -v nox-dap >/dev/null 2>&1; then exec nox-dap "$@"; fi
exec /usr/local/bin/nox-dap "$@"
