// The list of tables, and the search that narrows it down.

const mostColumns = 200; // columns that a search lists

for (const table of tables) {
    table.words = folded([table.table, table.server_table].join(' '));
    table.moreWords = folded([table.description ?? '', ...(table.indexes ?? []).map((index) => index.name ?? '')]
        .join(' '));
    for (const column of table.columns) {
        column.words = folded([column.name, column.description ?? ''].join(' '));
    }
}

function hasAll(text, words) {
    return words.every((word) => text.includes(word));
}

// Tables whose names hold all words, then those of which something else does, then columns.
function search(text) {
    const words = folded(text).split(/\s+/).filter(Boolean);
    const shown = tables.filter(isShown);
    if (!words.length) return {tables: shown, columns: [], count: 0};
    const byName = shown.filter((table) => hasAll(table.words, words));
    const byText = shown.filter((table) => !hasAll(table.words, words) &&
        hasAll(table.words + ' ' + table.moreWords, words));
    const columns = [];
    for (const table of shown) {
        for (const column of table.columns) {
            if (hasAll(column.words + ' ' + table.words, words) && !hasAll(table.words, words))
                columns.push({table, column});
        }
    }
    return {tables: [...byName, ...byText], columns: columns.slice(0, mostColumns), count: columns.length};
}

function listItem(table, column) {
    return element('li', null, element('a', {href: addressOf(table, column?.name), 'data-table': table.table},
        table.table, column ? element('span', {class: 'where'}, '.' + column.name) : null,
        column ? changeMark(column) : changeMark(table)));
}

function showList() {
    const text = document.getElementById('search').value;
    const found = search(text);
    document.getElementById('tables').replaceChildren(...found.tables.map((table) => listItem(table)),
        ...found.columns.map(({table, column}) => listItem(table, column)));
    document.getElementById('found').textContent = counted(found.tables.length, 'table', 'tables') +
        (found.count ? ', ' + counted(found.count, 'column', 'columns') : '') +
        (found.count > mostColumns ? ', the first ' + mostColumns + ' of them here' : '');
    markCurrent();
}

function offerSchemas() {
    if (schemaNames.length < 2) return;
    const details = document.getElementById('schemas');
    details.hidden = false;
    for (const name of schemaNames) {
        const box = element('input', {type: 'checkbox', checked: ''});
        box.addEventListener('change', () => {
            if (box.checked) hiddenSchemas.delete(name);
            else hiddenSchemas.add(name);
            showList();
            showView();
        });
        details.querySelector('fieldset').append(element('label', null, box, ' ' + (name || '(none)')));
    }
}

// From the search field down into the list and through it.
function moveInList(event) {
    const links = [...document.querySelectorAll('#tables a')];
    const step = {ArrowDown: 1, ArrowUp: -1}[event.key];
    if (!step || !links.length) return;
    const place = links.indexOf(document.activeElement) + step;
    (place < 0 ? document.getElementById('search') : links[Math.min(place, links.length - 1)]).focus();
    event.preventDefault();
}

function startSearch() {
    const field = document.getElementById('search');
    field.addEventListener('input', showList);
    document.getElementById('search-form').addEventListener('submit', (event) => {
        event.preventDefault();
        document.querySelector('#tables a')?.click();
    });
    document.querySelector('aside').addEventListener('keydown', moveInList);
    document.addEventListener('keydown', (event) => {
        if (event.key !== '/' || event.target instanceof HTMLInputElement) return;
        event.preventDefault();
        field.focus();
    });
}
