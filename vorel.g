
.inputs aa ba pr
.outputs ar br pa
.internal csc map csc1 map1 map2 map3 map4 map5 map6

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
pr+ ar+
pr- csc1-
csc+ map5-
csc- map1-
map+ map1+
map- ar-
csc1+ csc-
csc1- map5+
map1+ pa-
map1- map6+
map2+ map+
map2- map-
map3+ map2+
map3- map2-
map4+ map3+
map4- map3-
map5+ map4+
map5- map6-
map6+ br-
map6- map4-

.marking { <pa-,pr+> }
.end
