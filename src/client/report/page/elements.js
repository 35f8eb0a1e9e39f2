// Making elements. Whatever comes from the data becomes a text node or the value of a harmless attribute.

// element('td', {class: 'number'}, 'text', child, ...): children that are null or empty are left out.
function element(name, attributes, ...children) {
    return fill(document.createElement(name), attributes, children);
}

function drawing(name, attributes, ...children) {
    return fill(document.createElementNS('http://www.w3.org/2000/svg', name), attributes, children);
}

function fill(made, attributes, children) {
    for (const [key, value] of Object.entries(attributes ?? {})) {
        if (value !== null && value !== undefined) made.setAttribute(key, value);
    }
    made.append(...children.flat(Infinity).filter((child) => child !== null && child !== undefined && child !== ''));
    return made;
}

function addressOf(table, column) {
    return '#table/' + encodeURIComponent(table.table) + (column ? '/' + encodeURIComponent(column) : '');
}

function linkTo(table, text) {
    return element('a', {href: addressOf(table)}, text ?? table.table);
}

function code(text) {
    return text ? element('code', null, text) : null;
}

// A table of the page: headings, and rows of cells; a row's first cell is its heading.
function grid(caption, headings, rows) {
    const head = element('tr', null, headings.map((heading) => element('th', {scope: 'col'}, heading)));
    return element('div', {class: 'wide', tabindex: rows.length ? 0 : null, role: 'region', 'aria-label': caption},
        element('table', null, element('caption', {class: 'unseen'}, caption), element('thead', null, head),
            element('tbody', null, rows)));
}

function row(attributes, first, ...cells) {
    return element('tr', attributes, element('th', {scope: 'row'}, first), cells.map((cell) => cell instanceof
        HTMLTableCellElement ? cell : element('td', null, cell)));
}

function number(value) {
    return element('td', {class: 'number'}, value === undefined ? '' : value.toLocaleString('en'));
}

function joined(items, separator) {
    return items.flatMap((item, n) => (n ? [separator, item] : [item]));
}
