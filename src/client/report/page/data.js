'use strict';
// The data, and what follows from it: tables by name, who refers to whom, findings by place.

const report = JSON.parse(document.getElementById('data').textContent);
const tables = report.tables;
const tableByName = new Map();
const tableByServerName = new Map();

// A name is the same in any letter case, as it is in SQLite.
function folded(text) {
    return text.toLowerCase();
}

function findTable(name) {
    return tableByName.get(folded(name));
}

for (const table of tables) {
    table.columns ??= [];
    table.references ??= [];
    table.findings = [];
    table.referredBy = [];
    table.schema ??= '';
    tableByName.set(folded(table.table), table);
    tableByServerName.set(folded(table.server_table), table);
}
for (const table of tables) {
    for (const reference of table.references) {
        reference.from = table;
        reference.target = findTable(reference.table);
        reference.target?.referredBy.push(reference);
    }
}

const findings = report.findings ?? [];
const otherFindings = []; // about tables that are left out, or about no table
for (const finding of findings) {
    finding.about = tableByServerName.get(folded(finding.table ?? ''));
    (finding.about ? finding.about.findings : otherFindings).push(finding);
}

function findingsOfColumn(table, column) {
    return table.findings.filter((finding) => finding.column && folded(finding.column) === folded(column.name));
}

const schemaNames = [...new Set(tables.map((table) => table.schema))].sort();
const hiddenSchemas = new Set();

function isShown(table) {
    return !hiddenSchemas.has(table.schema);
}

// The tables next to a table, whichever way the reference goes; a table is no neighbour of its own.
function neighboursOf(table) {
    const found = new Set();
    for (const reference of table.references) {
        if (reference.target) found.add(reference.target);
    }
    for (const reference of table.referredBy) found.add(reference.from);
    found.delete(table);
    return found;
}

function counted(count, one, many) {
    return count.toLocaleString('en') + ' ' + (count === 1 ? one : many);
}
