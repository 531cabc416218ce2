# SPDX-License-Identifier: Apache-2.0
"""GDB loads this file with libIPLKernel.so, or by "source". The files it needs lie beside it."""
import os
import sys

import gdb

_here = os.path.dirname(os.path.realpath(__file__))
if _here not in sys.path:
    sys.path.insert(0, _here)

import ipl_commands
import ipl_printers

ipl_printers.register(gdb.current_objfile())
ipl_commands.register()
