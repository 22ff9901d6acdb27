#!/usr/bin/env bash
# Fails when an object compiled for wide machines offers code that the linker may take for a narrow
# one's: a weak symbol, or one outside the target's namespace.
# Usage: wide_objects.sh NAMESPACE OBJECT...
# SPDX-License-Identifier: Apache-2.0
set -euo pipefail

namespace=$1
shift
offered=$(nm --demangle --defined-only --extern-only "$@" | awk 'NF > 2')
foreign=$(awk -v own="$namespace::" '$2 ~ /^[WVu]$/ || index($0, own) == 0' <<< "$offered")
[[ -n $offered ]] || { echo "no symbols at all in $*"; exit 1; }
[[ -z $foreign ]] || { echo "shared with narrow machines:"; echo "$foreign"; exit 1; }
