// The charts of a page: they follow the check boxes of the lap table, share a cursor, and zoom together.
'use strict';

(() => {
  const data = JSON.parse(document.getElementById('data').textContent);
  const {axis, points, traces, laps} = data;
  const root = document.documentElement;
  const section = document.getElementById('charts');
  const placeOutput = section.querySelector('output');
  const wholeButton = document.getElementById('whole');
  const boxes = [...document.querySelectorAll('#laps input')];
  const spot = document.getElementById('spot');
  const hint = traces.length === 0 ? '' : matchMedia('(pointer: coarse)').matches ?
    'Touch a chart to read it.' :
    'Point at a chart to read it, drag to zoom, double-click to zoom out.';
  const lineColours = 8; // --lap-0 to --lap-7 in the style sheet
  const dashes = [null, [7, 3], [2, 3]]; // for the laps beyond the colours

  const numberText = (value, digits, isSigned) =>
    (isSigned && value > 0 ? '+' : '') + value.toFixed(digits).replace('-', '−');
  const valueText = (value, trace) => value === null ? '–' : numberText(value, trace.shownDigits, trace.signed);

  // Values are whole multiples of a trace's last digit, and each is given as the difference to the one before it.
  function decoded(differences, digits) {
    const scale = 10 ** -digits;
    const inverse = 10 ** digits;
    let sum = 0;
    return differences.map(difference => {
      if (difference === null)
        return null;
      sum += difference;
      return digits > 0 ? sum / inverse : sum * scale;
    });
  }

  function valuesOf(lap, index) {
    lap.decoded ??= [];
    const stored = lap.values[index];
    return lap.decoded[index] ??= stored ? decoded(stored, traces[index].digits) : new Array(points).fill(null);
  }

  // Colours stay with their laps as long as these are ticked.
  const slots = new Map();
  function slotOf(lap) {
    if (!slots.has(lap)) {
      const taken = new Set(slots.values());
      let slot = 0;
      while (taken.has(slot))
        ++slot;
      slots.set(lap, slot);
    }
    return slots.get(lap);
  }
  const colourVariable = lap => '--lap-' + slotOf(lap) % lineColours;
  const styleValue = name => getComputedStyle(root).getPropertyValue(name).trim();

  const tickedLaps = () => boxes.filter(box => box.checked).map(box => laps[box.value]);

  function element(name, className, parent) {
    const made = document.createElement(name);
    made.className = className;
    parent.append(made);
    return made;
  }

  const xOf = row => axis.length * row / (points - 1);
  const rowOf = x => Math.round(x / axis.length * (points - 1));

  const charts = traces.map((trace, index) => {
    const figure = element('figure', 'chart' + (index === 0 ? ' tall' : ''), section);
    const caption = element('figcaption', '', figure);
    element('b', '', caption).textContent = trace.name;
    element('span', '', caption).textContent = trace.unit;
    element('small', '', caption).textContent = trace.source;
    const plot = element('div', 'plot', figure);
    const list = element('ol', 'values', figure);
    return {trace, index, plot, list, cursor: null, graph: null};
  });

  if (charts.length > 0)
    element('p', 'axis', section).textContent = `${axis.name} (${axis.unit})`;

  function seriesOptions(layers) {
    const options = {labels: ['x'], colors: [], series: {}};
    for (const lap of layers) {
      options.labels.push(lap.name);
      options.colors.push(styleValue(colourVariable(lap)));
      options.series[lap.name] = {
        strokePattern: dashes[Math.floor(slotOf(lap) / lineColours) % dashes.length],
        strokeWidth: lap.best ? 2.2 : 1.4,
      };
    }
    if (layers.length === 0)
      options.labels.push('');
    options.gridLineColor = styleValue('--grid');
    options.axisLineColor = styleValue('--grid');
    return options;
  }

  function rowsOf(chart, layers) {
    const columns = layers.length ? layers.map(lap => valuesOf(lap, chart.index)) : [new Array(points).fill(null)];
    const rows = [];
    for (let row = 0; row < points; ++row)
      rows.push([xOf(row), ...columns.map(column => column[row])]);
    return rows;
  }

  function listLaps(chart, shown) {
    chart.list.replaceChildren();
    for (const lap of shown) {
      const item = element('li', '', chart.list);
      const mark = element('i', '', item);
      mark.style.borderColor = `var(${colourVariable(lap)})`;
      element('span', '', item).textContent = lap.name;
      element('output', '', item);
    }
  }

  function draw() {
    const shown = tickedLaps();
    for (const lap of [...slots.keys()]) {
      if (!shown.includes(lap))
        slots.delete(lap);
    }
    const best = shown.find(lap => lap.best);
    if (best)
      slotOf(best); // the first colour, unless another lap has it already
    for (const box of boxes) {
      const isShown = box.checked;
      box.closest('tr').classList.toggle('shown', isShown);
      box.style.accentColor = isShown ? `var(${colourVariable(laps[box.value])})` : '';
    }
    const layers = [...shown].sort((a, b) => a.best - b.best); // the best lap lies on top
    const options = seriesOptions(layers);
    for (const chart of charts) {
      chart.graph.updateOptions({file: rowsOf(chart, layers), ...options});
      listLaps(chart, shown);
    }
    showCursor(null);
  }

  // What the charts say at one row of the grid, or that they say nothing.
  function showCursor(row) {
    const shown = tickedLaps();
    const isPlace = row !== null && row >= 0 && row < points;
    for (const chart of charts) {
      chart.cursor.hidden = !isPlace;
      if (isPlace)
        chart.cursor.style.left = chart.graph.toDomXCoord(xOf(row)) + 'px';
      [...chart.list.querySelectorAll('output')].forEach((output, i) => {
        output.textContent = isPlace ? valueText(valuesOf(shown[i], chart.index)[row], chart.trace) : '';
      });
    }
    const share = axis.unit === '%' || axis.unit === 's' ? '' : ` (${(100 * row / (points - 1)).toFixed(1)} %)`;
    placeOutput.textContent = isPlace ? `${axis.name} ${xOf(row).toFixed(axis.digits)} ${axis.unit}${share}` : hint;
    section.dataset.row = isPlace ? row : '';
    if (spot) {
      const place = isPlace && data.track ? data.track[row] : null;
      spot.setAttribute('visibility', place ? 'visible' : 'hidden');
      if (place) {
        spot.setAttribute('cx', place[0]);
        spot.setAttribute('cy', place[1]);
      }
    }
  }

  function selectRow(row) {
    const chosen = Math.min(Math.max(row, 0), points - 1);
    charts[0].graph.setSelection(chosen, undefined, undefined, true);
    showCursor(chosen);
  }

  // The library's synchronizer would draw all charts again whenever one is drawn, so zooming is passed on here.
  function zoomAll(from) {
    const range = from.isZoomed('x') ? from.xAxisRange() : null;
    for (const {graph} of charts) {
      if (graph !== from)
        graph.updateOptions({dateWindow: range});
    }
    wholeButton.hidden = range === null;
    showCursor(null);
  }

  function makeGraph(chart, isLast) {
    const interactionModel = {...Dygraph.defaultInteractionModel};
    for (const event of ['touchstart', 'touchmove', 'touchend'])
      delete interactionModel[event]; // a page of charts must still scroll under a finger
    chart.graph = new Dygraph(chart.plot, [[0, null]], {
      labels: ['x', ''],
      axes: {
        x: {drawAxis: isLast, axisLabelFormatter: x => x.toFixed(axis.length < 20 ? 1 : 0), axisLabelWidth: 50},
        y: {
          axisLabelWidth: 46,
          pixelsPerLabel: 24,
          axisLabelFormatter: (value, granularity, option, graph) => {
            const [low, high] = graph.yAxisRange();
            const digits = Math.min(Math.max(Math.ceil(1 - Math.log10(high - low)), 0), chart.trace.shownDigits);
            return numberText(Number(value.toFixed(digits)), digits, chart.trace.signed);
          },
        },
      },
      axisLabelFontSize: 11,
      gridLineWidth: 1,
      highlightCircleSize: 3,
      interactionModel,
      rightGap: 10,
      stepPlot: chart.trace.stepped,
      yRangePad: 8,
      highlightCallback: (event, x) => showCursor(rowOf(x)),
      unhighlightCallback: () => showCursor(null),
      zoomCallback: () => zoomAll(chart.graph),
    });
    chart.cursor = element('div', 'cursor', chart.plot);
    const touch = event => {
      const left = chart.plot.getBoundingClientRect().left;
      selectRow(rowOf(chart.graph.toDataXCoord(event.touches[0].clientX - left)));
    };
    chart.plot.addEventListener('touchstart', touch, {passive: true});
    chart.plot.addEventListener('touchmove', touch, {passive: true});
  }

  // By the time, or in the order of the log.
  function sortLaps(isByTime) {
    const placeOf = row => isByTime ? Number(row.dataset.ms) || Infinity : Number(row.querySelector('input').value);
    for (const body of document.querySelectorAll('#laps tbody')) {
      const rows = [...body.querySelectorAll('tr:has(input)')];
      body.append(...rows.sort((a, b) => placeOf(a) - placeOf(b)));
    }
  }

  function tick(choice) {
    const wanted = {
      fastest: lap => lap.fastest,
      finished: lap => lap.finished,
      none: () => false,
    }[choice];
    for (const box of boxes)
      box.checked = !box.disabled && wanted(laps[box.value]);
    draw();
  }

  root.classList.add('scripted');
  // The library's own legend, which is not used here, sets a style in a way that the page's policy forbids.
  Dygraph.PLUGINS = Dygraph.PLUGINS.filter(plugin => plugin !== Dygraph.Plugins.Legend);
  charts.forEach((chart, i) => makeGraph(chart, i === charts.length - 1));
  if (charts.length > 1)
    Dygraph.synchronize(charts.map(chart => chart.graph), {zoom: false});
  draw();

  for (const box of boxes)
    box.addEventListener('change', draw);
  for (const button of document.querySelectorAll('[data-tick]'))
    button.addEventListener('click', () => tick(button.dataset.tick));
  for (const button of document.querySelectorAll('[data-sort]'))
    button.addEventListener('click', () => sortLaps(button.dataset.sort === 'time'));
  wholeButton.addEventListener('click', () => charts[0].graph.resetZoom());
  section.addEventListener('keydown', event => {
    const step = {ArrowLeft: -1, ArrowRight: 1}[event.key];
    if (!step)
      return;
    event.preventDefault();
    selectRow((Number(section.dataset.row) || 0) + step * (event.shiftKey ? 10 : 1));
  });

  // Canvases keep the colours and the size with which they were drawn.
  function drawAgain() {
    const pixelRatio = root.classList.contains('printing') ? 3 : null;
    for (const {graph} of charts) {
      graph.updateOptions({pixelRatio}, true);
      graph.resize();
    }
    draw();
  }
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', draw);
  // Paper gets copies of the canvases: browsers repeat on it what is drawn meanwhile, but without what is cleared.
  addEventListener('beforeprint', () => {
    root.classList.add('printing');
    drawAgain();
    for (const canvas of section.querySelectorAll('canvas:first-of-type')) {
      const copy = canvas.cloneNode();
      copy.classList.add('copy');
      copy.getContext('2d').drawImage(canvas, 0, 0);
      canvas.parentNode.append(copy);
    }
  });
  addEventListener('afterprint', () => {
    root.classList.remove('printing');
    for (const copy of section.querySelectorAll('.copy'))
      copy.remove();
    drawAgain();
  });
})();
