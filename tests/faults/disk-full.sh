#!/bin/bash
# Fills the disk under a storing node. Usage: disk-full.sh TN. Needs root, for a small file system in memory.
exec python3 "$(dirname "$0")/faults.py" disk-full "$@"
