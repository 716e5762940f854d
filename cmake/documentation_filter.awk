# Hands a header to Doxygen with what its plain comments tell: the heading becomes the text of its page, and each section
# a group of its members.

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
