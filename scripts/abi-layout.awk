# Prints, from abidw's XML, a line for each record of the library, for each of its members (offset
# in bits, name, type) and for each slot of its virtual table. A record is the library's if one of
# its headers below the folder `root` declares it. Reads the same file twice, because types are
# named after they are used.
function attribute(name) {
  return match($0, name "='[^']*'") ? substr($0, RSTART + length(name) + 2, RLENGTH - length(name) - 3) : ""
}
NR == FNR {
  if (/<(type-decl|typedef-decl|class-decl|enum-decl|array-type-def) /) names[attribute(" id")] = attribute("name")
  next
}
/<class-decl .*[^\/]>$/ {
  record = attribute("name")
  path = attribute("filepath")
  sub(/^.*\.\.\//, root, path)  # The headers include each other by relative paths.
  is_ours = index(path, root) == 1 && substr(path, length(root) + 1) ~ /^(atoms|engine|histogram)\//
  if (record in seen || !is_ours) record = ""
  seen[record] = 1
  stack[++depth] = record
  if (record != "") printf "%s: %s bits in all\n", record, attribute("size-in-bits")
}
/<\/class-decl>/ { --depth }
/<data-member / { offset = attribute("layout-offset-in-bits") }
/<var-decl / && offset != "" {
  type = names[attribute("type-id")]
  gsub("&lt;", "<", type)
  gsub("&gt;", ">", type)
  if (stack[depth] != "") printf "%s: %5d %s %s\n", stack[depth], offset, attribute("name"), type
  offset = ""
}
/<member-function .*vtable-offset/ { slot = attribute("vtable-offset") }
/<function-decl / && slot != "" {
  if (stack[depth] != "") printf "%s: virtual slot %2d %s\n", stack[depth], slot, attribute("name")
  slot = ""
}
