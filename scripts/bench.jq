# Input: the outputs of several processes of sensorvela-bench. Output: a row for each benchmark, with
# the median over the processes of each process' median. The true one lies between `low` and `high`
# in 96 of 100 cases if there are nine processes: they are the second least and second greatest.
def median: sort | (.[(length - 1) / 2 | floor] + .[length / 2 | floor]) / 2;
def low: sort | .[if length >= 9 then 1 else 0 end];
def high: sort | reverse | .[if length >= 9 then 1 else 0 end];
def known: ["ns", "baseline_ns", "ratio", "goal", "threads_of_a_slice"];
def standard: ["name", "family_index", "per_family_instance_index", "run_name", "run_type",
  "repetitions", "repetition_index", "threads", "iterations", "real_time", "cpu_time", "time_unit"];

# A process' runs of one benchmark, as one object of medians.
def medians: . as $runs | {
    table: (.[0].name | split("/")[0] | split(": ")[0]),
    name: (.[0].name | sub("/(iterations|repeats|min_time|real_time)[^/]*"; ""; "g")
      | split(": ")[1:] | join(": ")),
    index: .[0].family_index,
    time: (map(.real_time) | median),
    figures: (.[0] | keys - standard
      | map({key: ., value: (. as $key | $runs | map(.[$key]) | median)}) | from_entries)
  };

[.[] | [.benchmarks[] | select(.run_type == "iteration")] | group_by(.name)[] | medians]
| group_by(.index)
| map({
    table: .[0].table,
    name: .[0].name,
    threads: (.[0].figures.threads_of_a_slice // 1),
    goal: (.[0].figures.goal // 0),
    ns: (if .[0].figures.ns then map(.figures.ns) else map(.time) end | median),
    baseline_ns: (if .[0].figures.ratio then map(.figures.baseline_ns) | median else null end),
    ratio: (if .[0].figures.ratio then map(.figures.ratio) | median else null end),
    low: (if .[0].figures.ratio then map(.figures.ratio) | low else null end),
    high: (if .[0].figures.ratio then map(.figures.ratio) | high else null end),
    counters: ([.[].figures] | . as $all | .[0] | keys - known
      | map({key: ., value: (. as $key | $all | map(.[$key]) | median)}) | from_entries)
  })
