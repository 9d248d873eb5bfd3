#!/usr/bin/env bash
# Fails when a source file includes a header of a layer above its own. The build already
# refuses such an include (each layer's library sees only the folders below it); this check
# names the offending line plainly, also for headers that happen to be found another way.
set -euo pipefail
cd "$(dirname "$0")/.."

# Each layer and the folders it may include from, lowest first.
declare -A allowed=(
  [model]="model calc"
  [calc]="model calc"
  [faultloc]="model calc faultloc"
  [options]="model calc faultloc options"
  [cli]="model calc faultloc cli"
  [wave]="model calc faultloc options wave"
  [frame]="model calc faultloc options wave frame"
  [forms]="model calc faultloc options wave frame forms"
  [app]="model calc faultloc options wave frame forms app"
)

# Where each project header lives.
declare -A home=()
for folder in "${!allowed[@]}"; do
  [ -d "$folder" ] || continue
  while IFS= read -r header; do
    home[$(basename "$header")]=$folder
  done < <(find "$folder" -name '*.h')
done

status=0
for folder in "${!allowed[@]}"; do
  [ -d "$folder" ] || continue
  while IFS= read -r line; do
    file=${line%%:*}
    header=$(sed -E 's/.*#include "([^"]+)".*/\1/' <<<"${line#*:}")
    owner=${home[$(basename "$header")]:-}
    [ -n "$owner" ] || continue
    if [[ " ${allowed[$folder]} " != *" $owner "* ]]; then
      echo "upward include: $file includes $header of layer $owner" >&2
      status=1
    fi
  done < <(grep -rn --include='*.h' --include='*.cpp' '^#include "' "$folder" | cut -d: -f1,3-)
done
[ $status -eq 0 ] && echo "layers: every include looks down"
exit $status
