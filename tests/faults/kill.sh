#!/bin/bash
# Kills a storing node at random moments and looks what is left. Usage: kill.sh TN [--rounds N] [--fsync MODE] [--duplicates replace] [--folder DIR]
exec python3 "$(dirname "$0")/faults.py" kill "$@"
