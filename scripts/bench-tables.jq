# Input: the rows of all heaps. Output: each table's title, its header and its rows, separated by tabs.
def fixed($digits): if . == null then "" else
  (. * pow(10; $digits) | round | tostring) as $all
  | if $digits == 0 then $all else
      ("0" * ([$digits + 1 - ($all | length), 0] | max) // "") + $all
      | .[:-$digits] + "." + .[-$digits:] end end;
def short: if . == null then "" elif . < 100 then fixed(1) else fixed(0) end;
def verdict: if .goal == 0 then "" elif .high <= .goal then "met" elif .low > .goal then "**missed**"
  else "undecided" end;
def heap_name: if . == "default" then "glibc" else . end;

# A table without a goal has no columns for it.
def compared:
  any(.[][]; .goal != 0) as $has_goal
  | (.[0] | ["operation"] + (map(.heap | heap_name
      | [. + ": ns", . + ": baseline's", . + ": ratio", . + ": from to"]) | add)
      + if $has_goal then ["goal"] + map(.heap | heap_name) else [] end),
    (.[] | [.[0].name] + (map([(.ns | short), (.baseline_ns | short), (.ratio | fixed(2)),
      (.low | fixed(2)) + " " + (.high | fixed(2))]) | add)
      + if $has_goal then [.[0].goal | if . == 0 then "" else fixed(2) end] + map(verdict) else [] end);
def counted:
  (.[0] | [""] + (map((.heap | heap_name) as $heap | .counters | keys | map($heap + ": " + .[3:])) | add)),
  (.[] | [.[0].name] + (map(.counters | map(fixed(0))) | add));
def timed:
  (.[0] | [""] + map((.heap | heap_name) + ": ns")), (.[] | [.[0].name] + map(.ns | short));

[to_entries[] | .value + {at: .key}] | group_by(.table) | sort_by(.[0].at)[]
| "### " + .[0].table,
  ((group_by(.name) | map(sort_by(.at)) | sort_by(.[0].at))
  | (if .[0][0].ratio then compared elif (.[0][0].counters | length) > 0 then counted else timed end)
  | join("\t"))
