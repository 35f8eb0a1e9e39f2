// The words of T-SQL that a reader of scripts tells apart.
#pragma once

#include "kt_folded.hpp"

#include <cstddef>
#include <cstdint>
#include <string_view>

// clang-format off
#define HOST_TSQL_WORDS(X) \
    X(action, "ACTION") X(add, "ADD") X(all, "ALL") X(alter, "ALTER") X(always, "ALWAYS") X(and_, "AND") X(any, "ANY") \
    X(as, "AS") X(asc, "ASC") X(at, "AT") X(authorization, "AUTHORIZATION") X(backup, "BACKUP") X(begin, "BEGIN") \
    X(between, "BETWEEN") X(break_, "BREAK") X(browse, "BROWSE") X(bulk, "BULK") X(by, "BY") X(cascade, "CASCADE") \
    X(case_, "CASE") X(cast, "CAST") X(catch_, "CATCH") X(check, "CHECK") X(checkpoint, "CHECKPOINT") \
    X(close, "CLOSE") X(clustered, "CLUSTERED") X(collate, "COLLATE") X(column, "COLUMN") X(column_set, "COLUMN_SET") \
    X(columnstore, "COLUMNSTORE") X(commit, "COMMIT") X(constraint, "CONSTRAINT") X(continue_, "CONTINUE") \
    X(conversation, "CONVERSATION") X(convert, "CONVERT") X(create, "CREATE") X(current_timestamp, "CURRENT_TIMESTAMP") \
    X(current_user, "CURRENT_USER") X(cursor, "CURSOR") X(database, "DATABASE") X(dbcc, "DBCC") \
    X(deallocate, "DEALLOCATE") X(declare, "DECLARE") X(default_, "DEFAULT") X(delete_, "DELETE") X(deny, "DENY") \
    X(desc, "DESC") X(dialog, "DIALOG") X(disable, "DISABLE") X(distributed, "DISTRIBUTED") X(drop, "DROP") \
    X(edge, "EDGE") X(else_, "ELSE") X(enable, "ENABLE") X(encrypted, "ENCRYPTED") X(end, "END") X(escape, "ESCAPE") \
    X(except, "EXCEPT") X(exec, "EXEC") X(execute, "EXECUTE") X(exists, "EXISTS") X(external, "EXTERNAL") \
    X(fetch, "FETCH") X(filestream, "FILESTREAM") X(filestream_on, "FILESTREAM_ON") X(filetable, "FILETABLE") \
    X(for_, "FOR") X(foreign, "FOREIGN") X(from, "FROM") X(function, "FUNCTION") X(generated, "GENERATED") \
    X(get, "GET") X(go, "GO") X(goto_, "GOTO") X(grant, "GRANT") X(hash, "HASH") X(hidden, "HIDDEN") \
    X(identity, "IDENTITY") X(if_, "IF") X(iif, "IIF") X(in, "IN") X(include, "INCLUDE") X(increment, "INCREMENT") \
    X(index, "INDEX") X(insert, "INSERT") X(intersect, "INTERSECT") X(into, "INTO") X(is, "IS") X(join, "JOIN") \
    X(key, "KEY") X(kill, "KILL") X(like, "LIKE") X(masked, "MASKED") X(max, "MAX") X(merge, "MERGE") \
    X(move, "MOVE") X(next, "NEXT") X(no, "NO") X(nocheck, "NOCHECK") X(node, "NODE") \
    X(nonclustered, "NONCLUSTERED") X(not_, "NOT") X(null, "NULL") X(off, "OFF") X(on, "ON") X(open, "OPEN") \
    X(option, "OPTION") X(or_, "OR") X(order, "ORDER") X(out, "OUT") X(output, "OUTPUT") X(over, "OVER") \
    X(parse, "PARSE") X(period, "PERIOD") X(persisted, "PERSISTED") X(primary, "PRIMARY") X(print, "PRINT") \
    X(proc, "PROC") X(procedure, "PROCEDURE") X(public_, "PUBLIC") X(raiserror, "RAISERROR") X(readtext, "READTEXT") \
    X(rebuild, "REBUILD") X(receive, "RECEIVE") X(reconfigure, "RECONFIGURE") X(references, "REFERENCES") \
    X(replication, "REPLICATION") X(restore, "RESTORE") X(return_, "RETURN") X(revert, "REVERT") \
    X(revoke, "REVOKE") X(rollback, "ROLLBACK") X(row, "ROW") X(rowguidcol, "ROWGUIDCOL") X(rows, "ROWS") \
    X(rule, "RULE") X(save, "SAVE") X(schema, "SCHEMA") X(select, "SELECT") X(send, "SEND") X(sequence, "SEQUENCE") \
    X(session_user, "SESSION_USER") X(set, "SET") X(setuser, "SETUSER") X(shutdown, "SHUTDOWN") X(sparse, "SPARSE") \
    X(spatial, "SPATIAL") X(start, "START") X(statistics, "STATISTICS") X(synonym, "SYNONYM") \
    X(system_user, "SYSTEM_USER") X(table, "TABLE") X(textimage_on, "TEXTIMAGE_ON") X(then, "THEN") \
    X(throw_, "THROW") X(to, "TO") X(tran, "TRAN") X(transaction, "TRANSACTION") X(transfer, "TRANSFER") \
    X(trigger, "TRIGGER") X(truncate, "TRUNCATE") X(try_, "TRY") X(try_cast, "TRY_CAST") X(try_convert, "TRY_CONVERT") \
    X(type, "TYPE") X(union_, "UNION") X(unique, "UNIQUE") X(update, "UPDATE") X(updatetext, "UPDATETEXT") \
    X(use, "USE") X(user, "USER") X(value, "VALUE") X(values, "VALUES") X(varying, "VARYING") X(view, "VIEW") \
    X(waitfor, "WAITFOR") X(when, "WHEN") X(where, "WHERE") X(while_, "WHILE") X(with, "WITH") X(within, "WITHIN") \
    X(writetext, "WRITETEXT") X(xml, "XML") X(zone, "ZONE")
// clang-format on

enum class host_word : uint8_t {
    none,
#define HOST_TSQL_WORD(name, text) name,
    HOST_TSQL_WORDS(HOST_TSQL_WORD)
#undef HOST_TSQL_WORD
};

// The word that a text is, whatever its case; none for every other text.
host_word host_find_word(std::string_view text);

// Whether the word cannot be a name unless it is quoted.
bool host_is_reserved(host_word word);

inline char host_lower(char byte)
{
    return static_cast<char>(KT_char__folded(byte));
}
inline bool host_is_digit(char byte)
{
    return byte >= '0' && byte <= '9';
}
std::string_view host_trimmed(std::string_view text);
// Compares without regard to the case of ASCII letters.
inline bool host_same_text(std::string_view a, std::string_view b)
{
    if (a.size() != b.size())
        return false;
    for (size_t n = 0; n < a.size(); n++) {
        if (a[n] != b[n] && host_lower(a[n]) != host_lower(b[n]))
            return false;
    }
    return true;
}
