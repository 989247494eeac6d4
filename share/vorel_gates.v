// Simulation models of library gates, made by vorel-gates.
//
// An output follows the inputs after `delay`, which is 0 for inverters, as those in
// front of gates take no time, and 1 for all other gates. Other delays are told by
// defparam. A latch does not know its initial value: force the signals of the netlist
// to the values that it lists in its last lines, apply the inputs, and release them.

module \inv:combinational (O, A);
    output O;
    input A;
    parameter delay = 0;
    assign #delay O = ~A;
endmodule

module \and2:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = A & B;
endmodule

module \and2_1:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = A & ~B;
endmodule

module \nand2:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = ~(A & B);
endmodule

module \nand2_1:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = ~(A & ~B);
endmodule

module \and3:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = A & B & C;
endmodule

module \nand3:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = ~(A & B & C);
endmodule

module \and4:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = A & B & C & D;
endmodule

module \nand4:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = ~(A & B & C & D);
endmodule

module \or2:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = A | B;
endmodule

module \or2_1:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = A | ~B;
endmodule

module \nor2:combinational (O, A, B);
    output O;
    input A, B;
    parameter delay = 1;
    assign #delay O = ~(A | B);
endmodule

module \or3:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = A | B | C;
endmodule

module \nor3:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = ~(A | B | C);
endmodule

module \or4:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = A | B | C | D;
endmodule

module \nor4:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = ~(A | B | C | D);
endmodule

module \aoi22:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = ~(A & B | C & D);
endmodule

module \aoi12:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = ~(A | B & C);
endmodule

module \oai22:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = ~((A | B) & (C | D));
endmodule

module \oai12:combinational (O, A, B, C);
    output O;
    input A, B, C;
    parameter delay = 1;
    assign #delay O = ~(A & (B | C));
endmodule

module \ao22:combinational (O, A, B, C, D);
    output O;
    input A, B, C, D;
    parameter delay = 1;
    assign #delay O = A & B | C & D;
endmodule

module \const1:combinational (O);
    output O;
    parameter delay = 1;
    assign #delay O = 1'b1;
endmodule

module \const0:combinational (O);
    output O;
    parameter delay = 1;
    assign #delay O = 1'b0;
endmodule

module \delay:asynch (Q, D);
    output Q;
    input D;
    parameter delay = 1;
    assign #delay Q = D;
endmodule

module \delay_inv:asynch (Q, D);
    output Q;
    input D;
    parameter delay = 0;
    assign #delay Q = ~D;
endmodule

module \sr_nand:asynch (Q, S, R);
    output Q;
    input S, R;
    parameter delay = 1;
    assign #delay Q = ~S | R & Q;
endmodule

module \sr_nor:asynch (Q, S, R);
    output Q;
    input S, R;
    parameter delay = 1;
    assign #delay Q = S | ~R & Q;
endmodule

module \rs_nand:asynch (Q, S, R);
    output Q;
    input S, R;
    parameter delay = 1;
    assign #delay Q = ~R | S & Q;
endmodule

module \rs_nor:asynch (Q, S, R);
    output Q;
    input S, R;
    parameter delay = 1;
    assign #delay Q = ~R & Q | ~R & S;
endmodule

module \c_element1:asynch (C, A, B);
    output C;
    input A, B;
    parameter delay = 1;
    assign #delay C = ~A & B | (~A | B) & C;
endmodule

module \c_element0:asynch (C, A, B);
    output C;
    input A, B;
    parameter delay = 1;
    assign #delay C = A & B | (A | B) & C;
endmodule

module \c_element2:asynch (C, A, B);
    output C;
    input A, B;
    parameter delay = 1;
    assign #delay C = ~A & ~B | (~A | ~B) & C;
endmodule

module \gated_latch0:asynch (Q, D, G);
    output Q;
    input D, G;
    parameter delay = 1;
    assign #delay Q = D & G | Q & (~G | D);
endmodule

module \gated_latch1:asynch (Q, D, G);
    output Q;
    input D, G;
    parameter delay = 1;
    assign #delay Q = D & ~G | Q & G;
endmodule
