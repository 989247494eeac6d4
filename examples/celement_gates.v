// A C-element of simple gates, c = a b + a c + b c. Each function is right, and yet the circuit is
// not: c can rise and fall again before the gates that are to keep it have noticed.
module celement_gates(c, a, b);
  output c;
  input a, b;
  and ab(x, a, b);
  and ac(y, a, c);
  and bc(z, b, c);
  or sum(c, x, y, z);
endmodule
