# Turns the HTML of one Markdown page into a page of the guide and adds its sections to the search
# index. Variables: page, version, and the files pages ("page|group|title"), sizes ("file width
# height") and index_file.
# SPDX-License-Identifier: Apache-2.0
BEGIN {
  FS = "|"
  while ((getline < pages) > 0) {
    if ($3 == "") { missing[$1] = 1; continue }
    ++count
    name[count] = $1; group[count] = $2; title[$1] = $3
    if ($1 == page) here = count
  }
  FS = " "
  while ((getline < sizes) > 0) { width[$1] = $2; height[$1] = $3 }
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
  gsub(/\\/, "\\\\", text); gsub(/"/, "\\\"", text); gsub(/[\t\n ]+/, " ", text)
  sub(/^ /, "", text); sub(/ $/, "", text)
  return "\"" text "\""
}

# An id that is unique on this page.
function id_of(text,   id) {
  id = tolower(without_entities(without_tags(text)))
  gsub(/[^a-z0-9]+/, "-", id)
  gsub(/^-|-$/, "", id)
  if (id == "") id = "section"
  used[id]++
  return used[id] > 1 ? id "-" used[id] : id
}

function attribute(tag, key,   at) {
  at = index(tag, " " key "=\"")
  if (!at) return ""
  tag = substr(tag, at + length(key) + 3)
  return substr(tag, 1, index(tag, "\"") - 1)
}

# ---- Links: the sources link to each other's Markdown ----

function with_links(line,   before, link, target, text) {
  before = ""
  while (match(line, /<a href="[a-z0-9-]+\.md(#[a-z0-9-]+)?">[^<]*<\/a>/)) {
    link = substr(line, RSTART, RLENGTH)
    before = before substr(line, 1, RSTART - 1)
    line = substr(line, RSTART + RLENGTH)
    target = attribute(link, "href")
    text = without_tags(link)
    sub(/\.md.*/, "", target)
    if (target in missing) { before = before text; continue }
    if (!(target in title)) {
      print page ".md links to " target ".md, which is not in pages.txt" > "/dev/stderr"
      exit_status = 1
    }
    sub(/\.md/, ".html", link)
    before = before link
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
  shape = file ~ /\.svg$/ ? "drawing" : "dots"
  style = "width=\"" width[file] "\" height=\"" height[file] "\""
  if (match(caption, /^crop=[0-9]+x[0-9]+ ?/)) {
    split(substr(caption, 6, RLENGTH - 5), parts, "x")
    if (parts[1] + 0 > width[file] + 0) parts[1] = width[file]
    if (parts[2] + 0 > height[file] + 0) parts[2] = height[file]
    style = "width=\"" (parts[1] + 0) "\" height=\"" (parts[2] + 0) "\""
    shape = shape " cropped"
    caption = substr(caption, RLENGTH + 1)
  }
  return "<figure class=\"" shape "\"><a href=\"" file "\" title=\"Open the picture\"><img src=\"" file \
    "\" alt=\"" attribute(tag, "alt") "\" " style "></a>" \
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
    as_json(section_name), as_json(section_text) >> index_file
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
    "\" aria-label=\"Link to this section\">#</a></h" level ">\n"
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
  body = body line "\n"
  section_text = section_text " " line
}

# ---- The page ----

function link_to(number, relation, label) {
  if (number < 1 || number > count) return ""
  return "<a rel=\"" relation "\" class=\"" relation "\" href=\"" name[number] ".html\"><span>" label \
    "</span> " title[name[number]] "</a>\n"
}

function navigation(   i, last, list) {
  last = ""; list = ""
  for (i = 1; i <= count; ++i) {
    if (group[i] != last) {
      list = list (last == "" ? "" : "</ul>\n") "<h2>" group[i] "</h2>\n<ul>\n"
      last = group[i]
    }
    list = list "<li><a href=\"" name[i] ".html\"" (i == here ? " aria-current=\"page\"" : "") ">" \
      (name[i] == "index" ? "Overview" : title[name[i]]) "</a></li>\n"
  }
  return list "</ul>\n"
}

END {
  end_section()
  if (exit_status) exit exit_status
  contents = depth < 2 ? "" : "<nav class=\"contents\" aria-label=\"On this page\">\n<h2>On this page</h2>\n<ul>\n" \
    contents "</ul>\n</nav>"
  gsub(/&/, "\\\\&", contents)
  sub(/<!--contents-->/, contents, body)
  product = "Korvel Printer Guide"
  print "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">"
  print "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">"
  print "<meta name=\"color-scheme\" content=\"light dark\">"
  print "<title>" (page == "index" ? product : title[page] " – " product) "</title>"
  print "<link rel=\"icon\" type=\"image/svg+xml\" href=\"favicon.svg\">"
  print "<link rel=\"stylesheet\" href=\"style.css\">"
  print "<script src=\"search-index.js\" defer></script>\n<script src=\"guide.js\" defer></script>"
  print "</head>\n<body class=\"page-" page "\">"
  print "<a class=\"skip\" href=\"#content\">Skip to the content</a>"
  print "<input type=\"checkbox\" id=\"menu\" aria-label=\"Show all pages\">"
  print "<header>\n<a class=\"brand\" href=\"index.html\">" product "</a>"
  print "<div class=\"search\" role=\"search\" hidden><input type=\"search\" id=\"query\" placeholder=\"Search\"" \
    " aria-label=\"Search the guide\" autocomplete=\"off\" spellcheck=\"false\"><div id=\"results\" role=\"status\" hidden></div></div>"
  print "<label for=\"menu\">Pages</label>\n</header>"
  print "<div class=\"columns\">\n<nav class=\"pages\" aria-label=\"Pages\">\n" navigation() "</nav>"
  print "<main id=\"content\">\n<article>\n" body "</article>"
  print "<nav class=\"steps\" aria-label=\"Previous and next page\">\n" \
    link_to(here - 1, "prev", "Previous") link_to(here + 1, "next", "Next") "</nav>"
  print "<footer>Korvel printer driver " version "</footer>\n</main>\n</div>\n</body>\n</html>"
}
