# Makes OUTPUT, which has the page as C++, of the files in the folder page/ and of the modules D3_MODULES
# of the library below the folder D3, and beside it LICENSE.d3. Without modules it has an empty page.
set(folder ${CMAKE_CURRENT_LIST_DIR}/page)

# The SHA-256 of a text as a content security policy names it, in base64.
function(hash_source text result)
  string(SHA256 hex "${text}")
  set(digits ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(base64 "")
  foreach(at RANGE 0 60 6)
    string(SUBSTRING "${hex}00" ${at} 6 three_bytes)
    foreach(shift 18 12 6 0)
      math(EXPR digit "(0x${three_bytes} >> ${shift}) & 63")
      string(SUBSTRING ${digits} ${digit} 1 digit)
      string(APPEND base64 "${digit}")
    endforeach()
  endforeach()
  string(SUBSTRING "${base64}" 0 43 base64)
  set(${result} "'sha256-${base64}='" PARENT_SCOPE)
endfunction()

# Defines the string NAME as C++.
function(define_text name text result)
  file(WRITE ${OUTPUT}.text "${text}")
  file(READ ${OUTPUT}.text bytes HEX)
  string(REGEX REPLACE "(..)" "'\\\\x\\1'," bytes "${bytes}")
  set(${result} "constexpr char kBytesOf${name}[] = {${bytes}'\\0'};
const std::string_view k${name}(kBytesOf${name}, sizeof kBytesOf${name} - 1);\n" PARENT_SCOPE)
endfunction()

file(READ ${folder}/page.html page)
file(READ ${folder}/page.css style)
set(script "")
foreach(name ${SCRIPTS})
  file(READ ${folder}/${name} text)
  string(APPEND script "${text}")
endforeach()
set(library "")
set(licences "")
foreach(module ${D3_MODULES})
  file(READ ${D3}/${module}/dist/${module}.min.js text)
  string(APPEND library "${text}\n")
  file(READ ${D3}/../doc/node-${module}/copyright text)
  string(APPEND licences "${module}\n\n${text}\n")
endforeach()
if(library STREQUAL "")
  set(page "@DATA@")
elseif("${library}${script}" MATCHES "</script|<!--")
  message(FATAL_ERROR "a script would end its element in the page")
endif()
file(WRITE LICENSE.d3 "${licences}")
string(REPLACE "&" "&amp;" licences "${licences}")
string(REPLACE "<" "&lt;" licences "${licences}")
hash_source("${style}" style_source)
hash_source("${library}" library_source)
hash_source("${script}" script_source)

# The library and the data come last: nothing is replaced in them.
foreach(part style_source library_source script_source licences style script library)
  string(TOUPPER "@${part}@" place)
  string(REPLACE "${place}" "${${part}}" page "${page}")
endforeach()
string(FIND "${page}" "@DATA@" at)
string(SUBSTRING "${page}" 0 ${at} before)
math(EXPR at "${at} + 6")
string(SUBSTRING "${page}" ${at} -1 after)
define_text(PageBeforeData "${before}" before)
define_text(PageAfterData "${after}" after)
file(WRITE ${OUTPUT} "#include \"tools/picture/page.h\"

namespace sensorvela::tools {
${before}${after}
}  // namespace sensorvela::tools
")
