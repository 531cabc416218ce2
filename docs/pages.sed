# SPDX-License-Identifier: Apache-2.0
# Makes of a page that reads well where it lies one that Doxygen reads: pictures, links to headers, and no links to what
# the site does not hold.
s|^\[([^]]*)\]\(diagrams/([a-z-]+\.dot)\)$|@dotfile \2 "\1"|
s|^\[([^]]*)\]\(diagrams/([a-z-]+\.msc)\)$|@mscfile \2 "\1"|
s|\[`?([^]`]*)`?\]\(\.\./include/ipl/([A-Za-z]+\.h)\)|@ref \2 "\1"|g
s|\[([^]]*)\]\(\.\./[^)]*\)|\1|g
