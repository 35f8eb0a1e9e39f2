// Computing with whole numbers of up to 32 bits, and with decimals.
#include "checks/host_check_values.hpp"

using kind = host_value_kind;

static bool my_is_text(kind of)
{
    return of == kind::text || of == kind::text_literal;
}

static bool my_is_operand(kind of)
{
    return of == kind::integer || of == kind::tinyint || of == kind::whole_literal;
}

static const char *my_refuse_whole(const host_value &left, const host_value &right, char operation)
{
    if (my_is_text(left.kind) || my_is_text(right.kind))
        return "texts are joined by +";
    if (!my_is_operand(left.kind) || !my_is_operand(right.kind))
        return "it computes with values other than whole numbers of up to 32 bits, or decimals";
    if (left.kind == kind::tinyint && right.kind == kind::tinyint)
        return "it computes with two tinyint values, whose result has to be one on the server";
    const bool divides = operation == '/' || operation == '%';
    if (divides && (right.kind != kind::whole_literal || host_count_digits(right.literal) == 0))
        return "it divides by something that may be 0, which is NULL in SQLite";
    return nullptr;
}

host_value host_compute(host_check_changes &changes, host_value &left, host_value &right, char operation,
                        const char *&refusal)
{
    if (left.kind == kind::scaled || right.kind == kind::scaled)
        return host_compute_scaled(changes, left, right, operation, refusal);
    refusal = my_refuse_whole(left, right, operation);
    return refusal ? host_value{} : host_integer_value();
}
