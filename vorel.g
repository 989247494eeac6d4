
.inputs aa ba pr
.outputs ar br pa
.internal csc map csc1

.graph
aa+ csc+
aa- br+
ar+ aa+
ar- aa-
ba+ csc1+
ba- pa+
br+ ba+
br- ba-
pa+ pr-
pa- pr+
pr+ map-
pr- csc1-
csc+ ar-
csc- br-
map+ csc-
map- ar+
csc1+ map+
csc1- pa-

.marking { <pa-,pr+> }
.end
