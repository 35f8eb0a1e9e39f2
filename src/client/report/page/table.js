// One table with all that is known of it.

function noteOf(finding, withPlace) {
    const place = withPlace ? [finding.table, finding.column].filter(Boolean).join('.') : finding.column;
    return element('p', {class: 'note ' + finding.severity}, element('b', null, finding.severity + ' ' + finding.code),
        place ? [' ', element('code', null, place)] : null, ': ' + (finding.reason ?? ''),
        finding.host_text ? [' ', code(finding.host_text)] : null,
        finding.place ? element('span', {class: 'quiet'}, ' (' + finding.place + ')') : null);
}

function keysOf(table, column) {
    const chips = [];
    const add = (text, link) => chips.push(element('span', {class: 'chip'}, link ?? text));
    if (column.primary_key) add((table.keys?.find((key) => key.kind === 'primary')?.columns.length ?? 1) > 1 ?
        'PK ' + column.primary_key : 'PK');
    if (column.unique) add('unique');
    for (const reference of column.references ?? []) {
        const target = findTable(reference.table);
        const text = '→ ' + reference.table + (reference.column ? '.' + reference.column : '');
        add(text, target ? linkTo(target, text) : null);
    }
    return chips;
}

function serverType(column) {
    return [element('div', {class: 'type'}, code(column.server_type)),
        column.user_type ? element('div', {class: 'quiet'}, code(column.user_type)) : null,
        column.identity ? element('div', {class: 'type'}, code('identity(' + column.identity + ')')) : null,
        column.computed ? element('div', null, 'as ', code(column.computed)) : null,
        column.collation && column.collation !== report.collation ?
            element('div', {class: 'quiet'}, column.collation) : null];
}

// An expression without the parentheses that the server puts around it.
function bare(expression) {
    let text = expression.trim();
    while (text.startsWith('(') && text.endsWith(')') && !/[()]/.test(text.slice(1, -1).replace(/\([^()]*\)/g, '')))
        text = text.slice(1, -1).trim();
    return text.replace(/^N'/, "'");
}

function meanTheSame(own, servers) {
    const [a, b] = [bare(own), bare(servers)];
    return a === b || (a !== '' && b !== '' && Number(a) === Number(b));
}

function defaultOf(column) {
    const own = column.default, servers = column.server_default;
    const differs = servers && (!own || !meanTheSame(own, servers));
    return element('div', {class: own || servers ? 'broad' : null}, code(own ?? (servers ? 'none' : '')),
        differs ? element('div', {class: 'quiet'}, 'server: ', code(servers)) : null);
}

function keptAs(column) {
    if (column.left_out) return 'left out: ' + column.left_out;
    const {example, stored_example: stored} = column;
    const says = stored && stored !== example && stored !== "'" + example + "'";
    return element('div', {class: 'broad'}, column.form ?? '',
        says ? element('div', {class: 'quiet'}, code(example), ' is ', code(stored)) : null);
}

// A row of the column, and one of its findings where there are any.
function columnRows(table, column) {
    const about = column.description ? element('div', {class: 'about'}, column.description) : null;
    const notes = findingsOfColumn(table, column).map((finding) => noteOf({...finding, column: ''}));
    const line = row({class: column.left_out ? 'left-out' : null, 'data-column': column.name},
        [element('span', {class: 'column'}, column.name), changeMark(column), about], serverType(column),
        code(column.sqlite_type),
        element('td', {class: 'null'}, column.left_out ? '' : column.nullable ? 'NULL' : 'not NULL'),
        defaultOf(column), keysOf(table, column), keptAs(column));
    return notes.length ? [line, element('tr', {class: 'notes'}, element('td', {colspan: 7}, notes))] : [line];
}

function columnsGrid(table) {
    return grid('Columns of ' + table.table,
        ['Column', 'Server type', 'SQLite type', 'NULL', 'Default', 'Keys', 'Kept as'],
        table.columns.flatMap((column) => columnRows(table, column)));
}

function actionsOf(reference) {
    return [reference.on_delete && 'on delete ' + reference.on_delete.toLowerCase(),
        reference.on_update && 'on update ' + reference.on_update.toLowerCase()].filter(Boolean).join(', ');
}

function referencesTo(table) {
    return grid('References of ' + table.table, ['Columns', 'Table', 'Its columns', 'Actions', 'Name'],
        table.references.map((reference) => row(null, reference.columns.join(', '),
            reference.target ? linkTo(reference.target) : reference.table, reference.to.join(', ') || 'primary key',
            actionsOf(reference), reference.name ?? '')));
}

function referencesFrom(table) {
    return grid('References to ' + table.table, ['Table', 'Its columns', 'Columns here', 'Actions', 'Name'],
        table.referredBy.map((reference) => row(null, linkTo(reference.from), reference.columns.join(', '),
            reference.to.join(', ') || 'primary key', actionsOf(reference), reference.name ?? '')));
}

function keysGrid(table) {
    return grid('Keys of ' + table.table, ['Key', 'Columns', 'Name'],
        table.keys.map((key) => row(null, key.kind, key.columns.join(', '), key.name ?? '')));
}

function checksGrid(table) {
    return grid('Checks of ' + table.table, ['Name', 'Column', 'Condition'],
        table.checks.map((check) => row(null, check.name ?? '', check.column ?? '', code(check.expression))));
}

function indexesGrid(table) {
    return grid('Indexes of ' + table.table, ['Name', 'Kind', 'Columns', 'Included', 'Condition', 'In SQLite'],
        table.indexes.map((index) => row(null, index.name ?? '', index.kind ?? '', (index.columns ?? []).join(', '),
            (index.included ?? []).join(', '), code(index.filter), index.left_out ? 'left out' : 'yes')));
}

function headingOf(table) {
    const facts = [table.server_table !== table.table ? 'on the server ' + table.server_table : '',
        table.rows === undefined ? '' : counted(table.rows, 'row', 'rows'),
        table.history === 1 ? 'history of a temporal table' : table.history === 2 ? 'temporal table' : '']
        .filter(Boolean).join(' · ');
    return [element('h2', {tabindex: -1}, table.table, changeMark(table)),
        facts ? element('p', {class: 'quiet'}, facts) : null,
        table.description ? element('p', {class: 'text'}, table.description) : null];
}

// Findings of columns stand beside the columns.
function tableNotes(table) {
    const names = new Set(table.columns.map((column) => folded(column.name)));
    return table.findings.filter((finding) => !finding.column || !names.has(folded(finding.column)))
        .map((finding) => noteOf(finding));
}

// What the server would refuse of the database's rows.
function violationNotes(table) {
    return (table.violations ?? []).map((violation) => element('p', {class: 'note ' + violation.severity},
        element('b', null, violation.severity + ' ' + violation.code), violation.column ? [' ', code(violation.column)] :
            null, ': ' + violation.message + ', ' + counted(violation.count, 'time', 'times'),
        violation.examples.length ? [', e.g. ', joined(violation.examples.map(code), ', ')] : null));
}

function part(title, list, content) {
    return list?.length ? [element('h3', null, title), content()] : [];
}

function tableSection(table) {
    return element('section', null, headingOf(table), tableNotes(table), violationNotes(table),
        changesOf(table),
        part('Columns', table.columns, () => columnsGrid(table)),
        part('Refers to', table.references, () => referencesTo(table)),
        part('Referred to by', table.referredBy, () => referencesFrom(table)),
        part('Keys', table.keys, () => keysGrid(table)),
        part('Checks', table.checks, () => checksGrid(table)),
        part('Indexes', table.indexes, () => indexesGrid(table)));
}
