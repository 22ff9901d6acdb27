# Turns the HTML of one Markdown page into a page of one edition of the guide and adds its sections to
# the search index. Variables: page, edition, editions (all, the English one first), version, frame (the
# file with the texts around a page), and work, the folder with the files pages.EDITION
# ("page|group|title|language"), sizes ("file width height"), index, and ids/PAGE: the English edition
# writes the ids of its headings there, and the others use them too.
# SPDX-License-Identifier: Apache-2.0
BEGIN {
  edition_count = split(editions, edition_name, " ")
  for (i = 1; i <= edition_count; ++i) if (edition_name[i] == edition) column = i + 1
  FS = "|"
  while ((getline < frame) > 0) {
    text_of[$1] = $column
    if ($1 == "language") for (i = 1; i <= edition_count; ++i) own_name[i] = $(i + 1)
  }
  for (i = 1; i <= edition_count; ++i) {
    while ((getline < (work "/pages." edition_name[i])) > 0) {
      if ($1 == page) is_current[i] = $4 == edition_name[i]
      if (edition_name[i] != edition) continue
      ++count
      name[count] = $1; group[count] = $2; title[$1] = $3; language[$1] = $4
      if ($1 == page) here = count
    }
  }
  FS = " "
  while ((getline < (work "/sizes")) > 0) { width[$1] = $2; height[$1] = $3 }
  ids = work "/ids/" page
  if (edition != "en") while ((getline known < ids) > 0) known_id[++known_count] = known
  root = edition == "en" ? "" : "../"
  body = ""; contents = ""; depth = 0
}

# ---- Text ----

function without_tags(text) {
  gsub(/<[^>]*>/, "", text)
  return text
}

function without_entities(text) {
  gsub(/&lt;/, "<", text); gsub(/&gt;/, ">", text); gsub(/&quot;/, "\"", text); gsub(/&amp;/, "\\&", text)
  return text
}

function as_json(text) {
  text = without_entities(without_tags(text))
  gsub(/\\/, "&&", text); gsub(/"/, "\\\"", text); gsub(/[\t\n ]+/, " ", text)
  sub(/^ /, "", text); sub(/ $/, "", text)
  return "\"" text "\""
}

# An id that is unique on this page, and the same in all editions.
function id_of(text,   id) {
  ++headings
  if (edition != "en") return known_id[headings]
  id = tolower(without_entities(without_tags(text)))
  gsub(/[^a-z0-9]+/, "-", id)
  gsub(/^-|-$/, "", id)
  if (id == "") id = "section"
  used[id]++
  if (used[id] > 1) id = id "-" used[id]
  print id > ids
  return id
}

function attribute(tag, key,   at) {
  at = index(tag, " " key "=\"")
  if (!at) return ""
  tag = substr(tag, at + length(key) + 3)
  return substr(tag, 1, index(tag, "\"") - 1)
}

# ---- Links: the sources link to each other's Markdown ----

function with_links(line,   before, target) {
  before = ""
  while (match(line, /<a href="[a-z0-9-]+\.md[#"]/)) {
    target = substr(line, RSTART + 9, RLENGTH - 13)
    if (!(target in title)) {
      print page ".md links to " target ".md, which is not in pages.txt" > "/dev/stderr"
      exit_status = 1
    }
    before = before substr(line, 1, RSTART + 8) target ".html"
    line = substr(line, RSTART + RLENGTH - 1)
  }
  return before line
}

# ---- Figures: `![alt](file "crop=WxH caption")`; pictures are shown dot for dot, never scaled ----

function figure(tag,   file, caption, shape, style, parts) {
  file = attribute(tag, "src")
  caption = attribute(tag, "title")
  if (!(file in width)) {
    print page ".md shows " file ", which does not exist" > "/dev/stderr"
    exit_status = 1
  }
  shape = file ~ /^pictures/ ? "dots" : file ~ /^screens/ ? "screen" : "drawing"
  style = "width=\"" width[file] "\" height=\"" height[file] "\""
  if (match(caption, /^crop=[0-9]+x[0-9]+ ?/)) {
    split(substr(caption, 6, RLENGTH - 5), parts, "x")
    if (parts[1] + 0 > width[file] + 0) parts[1] = width[file]
    if (parts[2] + 0 > height[file] + 0) parts[2] = height[file]
    style = "width=\"" (parts[1] + 0) "\" height=\"" (parts[2] + 0) "\""
    shape = shape " cropped"
    caption = substr(caption, RLENGTH + 1)
  }
  return "<figure class=\"" shape "\"><a href=\"" root file "\" title=\"" text_of["picture"] \
    "\"><img src=\"" root file "\" alt=\"" attribute(tag, "alt") "\" " style "></a>" \
    (caption == "" ? "" : "<figcaption>" caption "</figcaption>") "</figure>"
}

function figures(paragraph,   all, number, tag) {
  all = ""; number = 0
  while (match(paragraph, /<img [^>]*>/)) {
    tag = substr(paragraph, RSTART, RLENGTH)
    paragraph = substr(paragraph, RSTART + RLENGTH)
    all = all figure(tag) "\n"
    ++number
  }
  return number > 1 ? "<div class=\"gallery\">\n" all "</div>\n" : all
}

# ---- Sections ----

function end_section() {
  if (section_id == "") return
  printf "[\"%s.html#%s\",%s,%s,%s],\n", page, section_id, as_json(title[page]), \
    as_json(section_name), as_json(section_text) >> (work "/index")
  section_text = ""
}

function heading(line,   level, text, id) {
  level = substr(line, 3, 1)
  text = line
  sub(/^<h[1-6]>/, "", text)
  sub(/<\/h[1-6]>$/, "", text)
  end_section()
  id = id_of(text)
  section_id = id; section_name = text
  if (level == 1) {
    body = body "<h1 id=\"" id "\">" text "</h1>\n<!--contents-->\n"
    return
  }
  body = body "<h" level " id=\"" id "\">" text " <a class=\"anchor\" href=\"#" id \
    "\" aria-label=\"" text_of["section-link"] "\">#</a></h" level ">\n"
  if (level == 2) {
    contents = contents "<li><a href=\"#" id "\">" without_tags(text) "</a></li>\n"
    ++depth
  }
}

/^<h[1-6]>/ { heading(with_links($0)); next }

# A table scrolls in its own box. On narrow screens each cell is a line of its own, and those after
# the second column show the heading of their column.
/^<table>/ { body = body "<div class=\"table\"><table>\n"; columns = 0; next }
/^<\/table>/ { body = body "</table></div>\n"; next }
/^<th>/ { column_name[++columns] = without_tags($0) }
/^<tr>/ { cell = 0 }
/^<td>/ {
  ++cell
  if (columns > 2 && cell > 1) sub(/^<td>/, "<td data-label=\"" column_name[cell] ": \">")
}

/^<p><img / { paragraph = ""; in_figure = 1 }
in_figure {
  paragraph = paragraph $0 "\n"
  if ($0 ~ /<\/p>$/) { body = body figures(paragraph); in_figure = 0 }
  next
}

{
  line = with_links($0)
  sub(/<pre>/, "<pre tabindex=\"0\">", line)  # so that it can be scrolled with the keyboard
  body = body line "\n"
  section_text = section_text " " line
}

# ---- The page ----

# The attribute for a text that is not in the language of the edition.
function foreign(which) {
  return language[which] == edition ? "" : " lang=\"" language[which] "\""
}

function link_to(number, relation, label) {
  if (number < 1 || number > count) return ""
  return "<a rel=\"" relation "\" class=\"" relation "\" href=\"" name[number] ".html\"><span>" label \
    "</span> <b" foreign(name[number]) ">" title[name[number]] "</b></a>\n"
}

function navigation(   i, last, list) {
  last = ""; list = ""
  for (i = 1; i <= count; ++i) {
    if (group[i] != last) {
      list = list (last == "" ? "" : "</ul>\n") "<h2>" text_of[group[i]] "</h2>\n<ul>\n"
      last = group[i]
    }
    list = list "<li><a href=\"" name[i] ".html\"" (i == here ? " aria-current=\"page\"" : "") \
      (name[i] == "index" ? ">" text_of["overview"] : foreign(name[i]) ">" title[name[i]]) "</a></li>\n"
  }
  return list "</ul>\n"
}

# This page in the edition with that number.
function in_edition(number) {
  return root (edition_name[number] == "en" ? "" : edition_name[number] "/") page ".html"
}

function language_switch(   i, list) {
  list = ""
  for (i = 1; i <= edition_count; ++i) {
    list = list "<a lang=\"" edition_name[i] "\" hreflang=\"" edition_name[i] "\" href=\"" \
      in_edition(i) "\"" (edition_name[i] == edition ? " aria-current=\"true\"" : "") ">" own_name[i] "</a>\n"
  }
  return "<nav class=\"languages\" aria-label=\"" text_of["languages"] "\">\n" list "</nav>"
}

# For search engines: the editions in which this page is translated.
function alternates(   i, list) {
  list = ""
  for (i = 1; i <= edition_count; ++i) {
    if (!is_current[i]) continue
    list = list "<link rel=\"alternate\" hreflang=\"" edition_name[i] "\" href=\"" in_edition(i) "\">\n"
  }
  return list
}

END {
  end_section()
  if (edition != "en" && headings != known_count) {
    print page ".md has " known_count " headings, its " edition " translation " headings > "/dev/stderr"
    exit_status = 1
  }
  if (exit_status) exit exit_status
  contents = depth < 2 ? "" : "<nav class=\"contents\" aria-label=\"" text_of["contents"] "\">\n<h2>" \
    text_of["contents"] "</h2>\n<ul>\n" contents "</ul>\n</nav>"
  at = index(body, "<!--contents-->")
  body = substr(body, 1, at - 1) contents substr(body, at + length("<!--contents-->"))
  product = text_of["product"]
  print "<!DOCTYPE html>\n<html lang=\"" edition "\">\n<head>\n<meta charset=\"utf-8\">"
  print "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
  print "<meta name=\"color-scheme\" content=\"light dark\">"
  print "<title>" (page == "index" ? product : title[page] " – " product) "</title>"
  print "<link rel=\"icon\" type=\"image/svg+xml\" href=\"" root "favicon.svg\">"
  print "<link rel=\"stylesheet\" href=\"" root "style.css\">"
  printf "%s", alternates()
  print "<script src=\"search-index.js\" defer></script>\n<script src=\"" root "guide.js\" defer></script>"
  print "</head>\n<body class=\"page-" page "\" data-copy=\"" text_of["copy"] "\" data-copied=\"" \
    text_of["copied"] "\" data-nothing=\"" text_of["nothing"] "\">"
  print "<a class=\"skip\" href=\"#content\">" text_of["skip"] "</a>"
  print "<header>\n<a class=\"brand\" href=\"index.html\">" product "</a>"
  print "<div class=\"search\" role=\"search\" hidden><input type=\"search\" id=\"query\" placeholder=\"" \
    text_of["search"] "\" aria-label=\"" text_of["search-label"] "\" autocomplete=\"off\" spellcheck=\"false\">" \
    "<div id=\"results\" role=\"status\" hidden></div></div>"
  print "<label for=\"menu\">" text_of["pages"] "</label>\n</header>"
  print "<div class=\"columns\">\n<nav class=\"pages\" aria-label=\"" text_of["pages"] "\">"
  print "<input type=\"checkbox\" id=\"menu\" aria-label=\"" text_of["show-pages"] "\">"
  print "<div class=\"list\">\n" navigation() "</div>\n</nav>"
  print "<main id=\"content\">\n" language_switch()
  if (language[page] != edition) print "<p class=\"notice\">" text_of["notice"] "</p>"
  print "<article" foreign(page) ">\n" body "</article>"
  print "<nav class=\"steps\" aria-label=\"" text_of["neighbours"] "\">\n" \
    link_to(here - 1, "prev", text_of["previous"]) link_to(here + 1, "next", text_of["next"]) "</nav>"
  print "<footer>" text_of["footer"] " " version "</footer>\n</main>\n</div>\n</body>\n</html>"
}
