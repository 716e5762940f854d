# Doxygen input filter for the public headers: awk -f documentation_filter.awk HEADER
#
# Turns plain // comments into Doxygen comments. The opening comment of a header becomes the text of its page, and each
# "// ---- Title ---" section becomes a named group of the members that follow it. Specialisations of templates of other
# libraries are hidden.

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
# Doxygen can't find the templates that these specialise.
held != "" && /^struct (std|fmt)::/ { print "/// @cond" }
held != "" { print held; isHidden = /^struct (std|fmt)::/; held = "" }
/^template </ { held = $0; next }
{ print }
isHidden && /^};/ { print "/// @endcond"; isHidden = 0 }
END {
  leave()
  if (hasGroup) print "///@}"
}
