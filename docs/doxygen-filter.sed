# What doxygen reads instead of what stands in the files.

# Only compilers need the mark that a name is ours and not one of another library.
s/\([ (]\)::\([Tq]\)/\1\2/g

# A class that is a friend is no part of the interface, as functions are.
s/^ *friend class .*//

# The picture of the rooms, which Git hosts draw from Mermaid, in the words of Graphviz.
/^```mermaid$/,/^```$/ {
    s/^```mermaid$/\\dot/
    s/^flowchart LR$/digraph { rankdir=LR; node [shape=box, fontname=Helvetica]/
    s/-->/->/
    s/\(.*\)-\.->\(.*\)/\1->\2 [style=dotted]/
    s/^```$/}\n\\enddot/
}
