#!/usr/bin/env bash
# Builds the filter and its host, sends XPS documents through and shows the result: ./run.sh [FILE...]
# Without a file it takes the project's own sample. The output goes to build/out.
set -euo pipefail
. "$(dirname "$0")/cmake/setup.sh"
