# Input: the outputs of several processes of sensorvela-bench. Output: a row for each benchmark, with
# the median over the processes of each process' median. The true one lies between `low` and `high`
# in 96 of 100 cases if there are nine processes: they are the second least and second greatest.
def median: sort | (.[(length - 1) / 2 | floor] + .[length / 2 | floor]) / 2;
def low: sort | .[if length >= 9 then 1 else 0 end];
def high: sort | reverse | .[if length >= 9 then 1 else 0 end];
def standard: ["name", "family_index", "per_family_instance_index", "run_name", "run_type",
  "repetitions", "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit"];

# Of an odd number of runs the one whose ratio is the median, so that its times give its ratio.
def middle: sort_by(.ratio) | .[(length - 1) / 2 | floor];

# A process' runs of one benchmark, as one object.
def summary: . as $runs | {
    table: (.[0].name | split("/")[0] | split(": ")[0]),
    name: (.[0].name | sub("/(iterations|repeats|min_time|real_time)[^/]*"; ""; "g")
      | split(": ")[1:] | join(": ")),
    index: .[0].family_index,
    time: (map(.real_time) | median),
    figures: (if .[0].ratio then middle else
      .[0] | keys - standard | map({key: ., value: (. as $key | $runs | map(.[$key]) | median)})
        | from_entries end)
  };

[.[] | [.benchmarks[] | select(.run_type == "iteration")] | group_by(.name)[] | summary]
| group_by(.index)
| map({
    table: .[0].table,
    name: .[0].name,
    threads: (.[0].figures.threads_of_a_slice // 1),
    goal: (.[0].figures.goal // 0)
  } + if .[0].figures.ratio then
    (map(.figures) | middle | {ns, baseline_ns, ratio})
    + (map(.figures.ratio) | {low: low, high: high})
  else {
    ns: (map(.time) | median),
    counters: (map(.figures) | . as $all | .[0] | keys
      | map({key: ., value: (. as $key | $all | map(.[$key]) | median)}) | from_entries)
  } end)
