#!/bin/sh
# Cost of the farm beside a plain loop: the same pictures as tasks of Slurm on one core and by one
# `render` on another core, at the same time, so that whatever else the machine does counts for
# both.
#   SLURM_CONF=... [LONG=1] bench/farm.sh PROGRAM SCENE SIZE NODE
# SCENE has Stagemarks; NODE is a node of one core on this machine, whose daemon and its children
# are bound to core 0 here. Prints a table: pictures, in how many tasks, seconds of both, their
# ratio. With LONG two more rows, of 200 pictures for each Stagemark: with five Stagemarks that is
# the most tasks that a job has.
set -eu
program=$1 scene=$2 size=$3 node=$4
states=$("$program" list "$scene" --names | wc -l)
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT INT TERM
now() { date +%s.%N; }
for daemon in $(pgrep -f "slurmd .*-N $node") $(pgrep -x slurmctld); do taskset -acp 0 "$daemon" >/dev/null; done
printf '%9s %6s %9s %9s %6s\n' pictures tasks farm local ratio
# Frames of each state, and pictures in a task; 0: as many as usual.
for row in "2 1" "2 0" "20 1" "20 0" ${LONG:+"200 1" "200 0"}; do
  set -- $row
  frames=$1 chunk=$2
  {
    begin=$(now)
    taskset -c 1 "$program" -q render "$scene" --size "$size" --frames "0:$((frames - 1))" --jobs 1 \
      -o "$folder/local $frames $chunk/{state} {frame}.png" >/dev/null
    echo "$(now) - $begin" | bc >"$folder/local"
  } &
  begin=$(now)
  "$program" farm submit "$scene" --size "$size" --frames "0:$((frames - 1))" --chunk "$chunk" --farm "$folder/farm $frames $chunk" \
    --sbatch-option="--nodelist=$node" --json >"$folder/submitted"
  tasks=$(sed -n 's/.*"tasks": \([0-9]*\).*/\1/p' "$folder/submitted")
  count=$((frames * states))
  while [ "$(find "$folder/farm $frames $chunk/jobs" -path '*/pictures/*.png' ! -path '*/page/*' | wc -l)" -lt $count ]; do sleep 0.1; done
  farm=$(echo "$(now) - $begin" | bc)
  wait
  local=$(cat "$folder/local")
  # The report is none of the pictures, and must not stand in the way of the next row.
  while [ -n "$(squeue -h)" ]; do sleep 0.1; done
  printf '%9d %6d %9.1f %9.1f %6.2f\n' $count "$tasks" "$farm" "$local" "$(echo "scale=3; $farm / $local" | bc)"
done
