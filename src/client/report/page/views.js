// The views: overview, findings, one table, all tables and so on. The part of the address after # says which is shown.

function violationCount(table) {
    const errors = (table.violations ?? []).filter((violation) => violation.severity === 'error');
    return errors.reduce((sum, violation) => sum + violation.count, 0);
}

// The columns of the overview; those of rows are there where a database was read.
function overviewColumns() {
    const always = [
        ['Table', (table) => [linkTo(table), changeMark(table)]],
        ['Columns', (table) => number(table.columns.length)],
        ['Refers to', (table) => number(table.references.length)],
        ['Referred to by', (table) => number(table.referredBy.length)],
        ['Findings', (table) => number(table.findings.length || undefined)],
    ];
    const ofRows = [
        ['Rows', (table) => number(table.rows)],
        ['Refused', (table) => number(violationCount(table) || undefined)],
    ];
    return [...always, ...(tables.some((table) => table.rows !== undefined) ? ofRows : []),
        ['Description', (table) => element('div', {class: 'text'}, table.description ?? '')]];
}

function overview() {
    const columns = overviewColumns();
    return [element('h2', {tabindex: -1}, 'Overview'), grid('Tables', columns.map(([heading]) => heading),
        tables.filter(isShown).map((table) => row(null, ...columns.map(([, cell]) => cell(table)))))];
}

function findingsView() {
    const byCode = new Map();
    for (const finding of findings) {
        if (finding.about && !isShown(finding.about)) continue;
        byCode.set(finding.code, [...(byCode.get(finding.code) ?? []), finding]);
    }
    const ofCode = ([kind, list]) => [element('h3', null, kind + ' (' + list.length + ')'),
        list.map((finding) => {
            const note = noteOf(finding, true);
            if (finding.about) note.append(' ', linkTo(finding.about, 'See ' + finding.about.table));
            return note;
        })];
    return [element('h2', {tabindex: -1}, 'Findings'),
        element('p', {class: 'quiet'}, report.findings ? 'What the import approximated or left out.' :
            'This report was made without the findings of the import.'),
        findings.length || !report.findings ? '' : element('p', null, 'There are none.'),
        [...byCode].map(ofCode)];
}

function tableView(name, columnName) {
    const table = findTable(name);
    if (!table) return [element('h2', {tabindex: -1}, 'There is no such table'), element('p', null, name)];
    const section = tableSection(table);
    const heading = element('h3', null, 'Neighbourhood');
    if (neighboursOf(table).size) section.append(heading, diagram(table, false));
    const line = columnName && [...section.querySelectorAll('tr[data-column]')]
        .find((candidate) => candidate.dataset.column === columnName);
    if (line) queueMicrotask(() => line.scrollIntoView({block: 'center'}));
    return [section];
}

function allTables() {
    return tables.filter(isShown).map(tableSection);
}

const views = {
    overview: () => overview(),
    findings: () => findingsView(),
    changes: () => (report.changes ? changesView() : overview()),
    all: () => allTables(),
    diagram: (name) => [element('h2', {tabindex: -1}, 'Diagram'), diagram(name ? findTable(name) : null, true)],
    table: (name, column) => tableView(name, column),
};

function currentAddress() {
    const parts = location.hash.slice(1).split('/');
    try {
        return parts.map(decodeURIComponent);
    } catch {
        return parts;
    }
}

function markCurrent() {
    const [view, name] = currentAddress();
    for (const link of document.querySelectorAll('header nav a, #tables a')) {
        const isCurrent = link.dataset.table ? view === 'table' && link.dataset.table === name :
            link.getAttribute('href') === '#' + (view || 'overview');
        if (isCurrent) link.setAttribute('aria-current', 'page');
        else link.removeAttribute('aria-current');
    }
}

function showView() {
    const [view, ...rest] = currentAddress();
    const make = Object.hasOwn(views, view) ? views[view] : views.overview;
    document.getElementById('main').replaceChildren(...make(...rest).flat(Infinity).filter(Boolean));
    markCurrent();
}
