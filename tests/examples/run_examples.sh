#!/bin/bash
# run_examples.sh FOLDER SAMPLES: runs the examples built in FOLDER (FOLDER/NAME/NAME or FOLDER/NAME) on the pictures
# in SAMPLES; those on a screen are skipped with a line where no screen can be had
set -euo pipefail

exec /usr/bin/python3 -B "$(dirname "$0")/examples_test.py" "$@"
