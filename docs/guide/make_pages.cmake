# Turns the guide's Markdown into HTML with a common head: called with CMARK_GFM, SOURCE, TARGET,
# PAGES, VERSION.
# SPDX-License-Identifier: Apache-2.0
foreach(page IN LISTS PAGES)
  file(STRINGS ${SOURCE}/${page}.md title LIMIT_COUNT 1 REGEX "^# ")
  string(SUBSTRING "${title}" 2 -1 title_${page})
endforeach()

foreach(page IN LISTS PAGES)
  execute_process(
    COMMAND ${CMARK_GFM} --extension table --to html ${SOURCE}/${page}.md
    OUTPUT_VARIABLE body COMMAND_ERROR_IS_FATAL ANY)
  # The sources link to each other as they lie in the repository.
  string(REGEX REPLACE "href=\"([a-z-]+)\\.md\"" "href=\"\\1.html\"" body "${body}")
  set(links "")
  foreach(other IN LISTS PAGES)
    set(here "")
    if(other STREQUAL page)
      set(here " class=\"here\"")
    endif()
    set(name "${title_${other}}")
    if(other STREQUAL "index")
      set(name "Guide")
    endif()
    string(APPEND links "<li><a href=\"${other}.html\"${here}>${name}</a></li>\n")
  endforeach()
  file(
    WRITE ${TARGET}/${page}.html
    "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
    "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
    "<title>${title_${page}}</title>\n<link rel=\"stylesheet\" href=\"style.css\">\n</head>\n"
    "<body>\n<nav><ul>\n${links}</ul></nav>\n<main>\n${body}</main>\n"
    "<footer>Korvel printer driver ${VERSION}</footer>\n</body>\n</html>\n")
endforeach()
file(COPY ${SOURCE}/style.css DESTINATION ${TARGET})
