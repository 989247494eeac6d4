// synthesis/testbench_text.h - the parts of a testbench that are the same for all circuits.
// Here:      Verilog.
// Not here:  what depends on the circuit and its STG (synthesis/testbench.h).
//
// A node is what changes in one step: a signal or a wire. First come those that gates drive, the
// signals before the wires, then the inputs. Of Verilog no more than the standard of 2001 is used.
#pragma once

namespace vorel::synthesis::testbench {

inline constexpr const char* state_text = R"(
    reg [nodes-1:0] value;            // now
    reg [nodes-1:0] active;           // gates that are excited, inputs that are about to change
    reg [63:0] act_time [0:nodes-1];  // when they will, if active
    integer slowness [0:nodes-1];
    reg is_over, is_traced, next;
    integer edges, edge_count, random_state, first, last, looked_at;
    reg [8*256-1:0] vcd;

    // The STG. All markings that it can be in after what has happened, and what they tell.
    reg [places-1:0] preset [0:transitions-1];
    reg [places-1:0] postset [0:transitions-1];
    integer node_of [0:transitions-1];          // -1: a dummy
    reg [1:0] value_before [0:transitions-1];  // of its node; 2: any
    reg [places-1:0] possible [0:most_markings-1];
    reg [places-1:0] following [0:most_markings-1];
    integer possible_count, following_count;
    reg [nodes-1:0] allowed, was_allowed;  // signals with an edge in one of the markings
    reg [nodes-1:0] due, was_due;          // in each that enables no dummy
    reg is_something_due;                  // each of these has an edge of an output or such
    reg [63:0] due_since [0:nodes-1];
)";

inline constexpr const char* token_game_text = R"(
    task complain(input integer node);
        begin
            $write("%0s: time %0d: ", title, $time);
            if (node >= 0) write_name(node);
            is_over = 1;
        end
    endtask

    task write_edge(input integer node, input was);
        begin
            write_name(node);
            $write("%0s", was ? "-" : "+");
        end
    endtask

    function is_enabled(input integer transition, input [places-1:0] marking);
        is_enabled = (marking & preset[transition]) == preset[transition];
    endfunction

    function [places-1:0] after(input integer transition, input [places-1:0] marking);
        after = marking & ~preset[transition] | postset[transition];
    endfunction

    function is_edge_of_now(input integer transition);
        is_edge_of_now = node_of[transition] >= 0 && (value_before[transition] == 2
            || value_before[transition] == value[node_of[transition]]);
    endfunction

    task add_following(input [places-1:0] marking);
        integer i;
        begin
            i = 0;
            while (i < following_count && following[i] != marking) i = i + 1;
            if (i == most_markings) begin
                complain(-1);
                $display("the STG can be in more than %0d markings", most_markings);
            end else if (i == following_count) begin
                following[i] = marking;
                following_count = following_count + 1;
            end
        end
    endtask

    task follow_dummies;
        integer i, t;
        begin
            for (i = 0; i < following_count && !is_over; i = i + 1)
                for (t = 0; t < transitions && !is_over; t = t + 1)
                    if (node_of[t] < 0 && is_enabled(t, following[i]))
                        add_following(after(t, following[i]));
            for (i = 0; i < following_count; i = i + 1) possible[i] = following[i];
            possible_count = following_count;
        end
    endtask

    // The value of the node is still that before its edge.
    task play(input integer node);
        integer i, t;
        begin
            following_count = 0;
            for (i = 0; i < possible_count && !is_over; i = i + 1)
                for (t = 0; t < transitions && !is_over; t = t + 1)
                    if (node_of[t] == node && is_edge_of_now(t) && is_enabled(t, possible[i]))
                        add_following(after(t, possible[i]));
            follow_dummies;
        end
    endtask

    task look_at_markings;
        integer i, t;
        reg [nodes-1:0] edges_here;
        reg has_dummy, is_any_settled;
        begin
            was_allowed = allowed;
            was_due = due;
            allowed = 0;
            due = 0;
            is_something_due = 0;
            is_any_settled = 0;
            for (i = 0; i < possible_count; i = i + 1) begin
                edges_here = 0;
                has_dummy = 0;
                for (t = 0; t < transitions; t = t + 1)
                    if (is_enabled(t, possible[i])) begin
                        if (node_of[t] < 0) has_dummy = 1;
                        else if (is_edge_of_now(t)) edges_here[node_of[t]] = 1;
                    end
                allowed = allowed | edges_here;
                if (!has_dummy) begin
                    due = is_any_settled ? due & edges_here : edges_here;
                    is_something_due = (!is_any_settled || is_something_due)
                        && |edges_here[signals-1:0];
                    is_any_settled = 1;
                end
            end
            for (i = 0; i < signals; i = i + 1)
                if (!was_due[i]) due_since[i] = $time;
        end
    endtask
)";

inline constexpr const char* circuit_text = R"(
    task settle;
        begin
            #0;
            #0;
            #0;
            #0;
        end
    endtask

    // What the gate is about to make of its output. It is held again at the first change, as one
    // that its own output excites would swing for ever.
    task find_next(input integer node);
        begin
            next = value[node];
            looked_at = node;
            let_go(node);
            settle;
            looked_at = -1;
            hold(node);
            settle;
        end
    endtask

    always @(net)
        if (looked_at >= 0) begin
            next = net[looked_at] === value[looked_at] ? !value[looked_at] : net[looked_at];
            hold(looked_at);
            looked_at = -1;
        end

    task plan(input integer node);
        act_time[node] = $time + 1 + {$random(random_state)} % slowness[node];
    endtask

    // `last` has changed.
    task look_at_gates;
        integer i;
        for (i = 0; i < gates && !is_over; i = i + 1) begin
            find_next(i);
            if (next !== 1'b0 && next !== 1'b1) begin
                complain(i);
                $display(" has no value");
            end else if (active[i] && next === value[i]
                         && !(i < signals && was_allowed[i] && !allowed[i])) begin
                complain(i);
                $write(" was excited and is disabled by ");
                write_edge(last, !value[last]);
                $display;
            end else if (!active[i] && next !== value[i]) plan(i);
            active[i] = next !== value[i];
        end
    endtask

    task look_at_inputs;
        integer i;
        for (i = gates; i < nodes; i = i + 1) begin
            if (allowed[i] && !active[i]) plan(i);
            active[i] = allowed[i];
        end
    endtask

    task look_for_missing;
        integer i;
        begin
            for (i = 0; i < signals && !is_over; i = i + 1)
                if (due[i] && $time > due_since[i] + (gates + 1) * (slowest + 1)) begin
                    complain(-1);
                    write_edge(i, value[i]);
                    $display(" is due and does not come");
                end
            if (!is_over && is_something_due && !(|active[gates-1:0])) begin
                complain(-1);
                $write("all gates rest and the STG waits for");
                for (i = 0; i < signals; i = i + 1)
                    if (allowed[i]) begin
                        $write(" ");
                        write_edge(i, value[i]);
                    end
                $display;
            end
        end
    endtask

    task look;
        begin
            look_at_markings;
            look_at_gates;
            look_at_inputs;
            look_for_missing;
        end
    endtask

    task act(input integer node);
        begin
            last = node;
            active[node] = 0;
            if (is_traced) begin
                $write("%0d ", $time);
                write_edge(node, value[node]);
                $display;
            end
            if (node < signals || node >= gates) begin
                edge_count = edge_count + 1;
                if (allowed[node]) play(node);
                else begin
                    complain(-1);
                    write_edge(node, value[node]);
                    $display(" comes, which the STG does not allow");
                end
                due[node] = 0;
            end
            value[node] = ~value[node];
            if (node < gates) hold(node);
            settle;
            if (!is_over) look;
        end
    endtask

    // -1: none is active.
    task find_first;
        integer i;
        begin
            first = -1;
            for (i = 0; i < nodes; i = i + 1)
                if (active[i] && (first < 0 || act_time[i] < act_time[first])) first = i;
        end
    endtask

    // Which gates are slow changes, so that each overtakes each other at times.
    task draw_slowness;
        integer i;
        for (i = 0; i < nodes; i = i + 1)
            slowness[i] = 1 + (slowest >> ({$random(random_state)} % 8));
    endtask

    task run;
        begin
            find_first;
            while (!is_over && first >= 0 && edge_count < edges) begin
                #(act_time[first] - $time);
                act(first);
                if (edge_count % 64 == 0) draw_slowness;
                find_first;
            end
            if (!is_over) $display("%0s: %0d edges, all as the STG has them", title, edge_count);
        end
    endtask

    initial begin
        edge_count = 0;
        looked_at = -1;
        if (!$value$plusargs("edges=%d", edges)) edges = 1000;
        if (!$value$plusargs("seed=%d", random_state)) random_state = 1;
        is_traced = $test$plusargs("trace");
        if ($value$plusargs("vcd=%s", vcd)) begin
            $dumpfile(vcd);
            $dumpvars(0, dut);
        end
        is_over = 0;
        active = 0;
        allowed = 0;
        due = 0;
        draw_slowness;
        describe_stg;
        start_circuit;
        look;
        run;
    end
endmodule
)";

}  // namespace vorel::synthesis::testbench
