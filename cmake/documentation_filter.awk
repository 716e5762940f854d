# Doxygen input filter for the public headers: awk -f documentation_filter.awk HEADER
#
# Turns plain // comments into Doxygen comments. The opening comment of a header becomes the text of its page, and each
# "// ---- Title ---" section becomes a named group of the members that follow it.

function leave() {
  if (inSection) print "///@{"
  inHeading = inSection = 0
}

NR == 1 {
  print "/// @file"
  inHeading = 1
}
/^\/\/ ---- .* -+$/ {
  leave()
  if (hasGroup++) print "///@}"
  gsub(/^\/\/ -+ | -+$/, "")
  print "/// @name " $0
  print "///"
  inSection = 1
  next
}
!/^\/\/($| )/ { leave() }
inHeading || inSection { sub(/^\/\//, "///") }
{ print }
END {
  leave()
  if (hasGroup) print "///@}"
}
