'use strict';
// Fills the page from its data. Plots are SVG: lines over the frames, with a stripe for each light.
const data = JSON.parse(document.getElementById('data').textContent);
const byId = (id) => document.getElementById(id);

function element(name, attributes, ...children) {
  const isSvg = ['svg', 'rect', 'line', 'polyline', 'text', 'title', 'g'].includes(name);
  const made = isSvg ? document.createElementNS('http://www.w3.org/2000/svg', name) : document.createElement(name);
  for (const [key, value] of Object.entries(attributes || {})) made.setAttribute(key, value);
  made.append(...children);
  return made;
}

const lightColors = ['#7aa7d9', '#e0913a', '#e8cf4a', '#7d83d6'];

/// {title, low, high, isLogarithmic, band: [low, high], series: [{name, color, values}]}
function plot(chart) {
  const width = 900, height = 210, left = 52, right = 12, top = 40, bottom = 22;
  const count = data.lights.at(-1).first + data.lights.at(-1).count;
  const scale = chart.isLogarithmic ? Math.log : (v) => v;
  const low = scale(chart.low), high = scale(chart.high);
  const x = (frame) => left + (width - left - right) * (frame + .5) / count;
  const y = (value) => {
    const share = (scale(Math.max(value, chart.isLogarithmic ? chart.low : value)) - low) / (high - low);
    return top + (height - top - bottom) * (1 - Math.min(Math.max(share, 0), 1));
  };
  const svg = element('svg', {viewBox: `0 0 ${width} ${height}`, role: 'img', 'aria-label': chart.title});
  for (const light of data.lights) {
    const from = x(light.first - .5), to = x(light.first + light.count - .5);
    svg.append(element('rect', {x: from, y: top, width: to - from, height: height - top - bottom,
      fill: lightColors[light.index % lightColors.length], opacity: .16}));
    if (to - from > 60) svg.append(element('text', {x: from + 4, y: height - 7}, light.name));
  }
  const ticks = chart.isLogarithmic
    ? [1, 10, 100, 1000, 10000].filter((v) => v >= chart.low && v <= chart.high)
    : [0, 1, 2, 3, 4].map((i) => chart.low + (chart.high - chart.low) * i / 4);
  const unit = chart.high - chart.low > 100 ? 1 : 100;
  for (const tick of ticks) {
    svg.append(element('line', {class: 'grid', x1: left, x2: width - right, y1: y(tick), y2: y(tick)}),
      element('text', {x: left - 6, y: y(tick) + 4, 'text-anchor': 'end'}, String(Math.round(tick * unit) / unit)));
  }
  if (chart.band) {
    svg.append(element('rect', {class: 'band', x: left, width: width - left - right, y: y(chart.band[1]),
      height: y(chart.band[0]) - y(chart.band[1])}));
  }
  svg.append(element('text', {class: 'title', x: left, y: 16}, chart.title));
  chart.series.forEach((series, i) => {
    const points = series.values.map((v, frame) => `${x(frame).toFixed(1)},${y(v).toFixed(1)}`);
    svg.append(element('polyline', {points: points.join(' '), stroke: series.color}));
    if (chart.series.length > 1)
      svg.append(element('text', {x: left + 70 * i, y: 32, style: `fill: ${series.color}`}, series.name));
  });
  return svg;
}

function table(heads, rows) {
  return element('table', {}, element('tr', {}, ...heads.map((head) => element('th', {}, head))),
    ...rows.map((row) => element('tr', {}, ...row.map((cell) => element('td', {}, String(cell))))));
}

function picture(shown) {
  return element('figure', {}, element('img', {alt: shown.caption, src: 'data:image/png;base64,' + shown.png}),
    element('figcaption', {}, shown.caption));
}

function exposure(where, run) {
  where.append(
    plot({title: run.brightnessTitle, low: 0, high: run.fullScale, band: run.band,
      series: [{color: '#3f7fd0', values: run.brightness}]}),
    plot({title: 'Exposure time (rows)', low: 10, high: data.mostExposure, isLogarithmic: true,
      series: [{color: '#b5559f', values: run.exposure}]}),
    plot({title: 'Amplification in the sensor', low: 0, high: data.mostGain,
      series: [{color: '#c9742c', values: run.gain}]}));
}

byId('summary').textContent = data.summary;
for (const card of data.cards)
  byId('cards').append(element('div', {}, element('b', {}, card.value), element('span', {}, card.meaning)));
byId('sheet').append(element('img', {alt: 'the run, from left to right and from top to bottom',
  src: 'data:image/png;base64,' + data.contactSheet}));
byId('pictures').append(...data.pictures.map(picture));
byId('accuracy').append(table(data.accuracy.heads, data.accuracy.rows));
byId('law').textContent = data.run.law;
exposure(byId('exposure'), data.run);
byId('settling').append(table(data.settling.heads, data.settling.rows));
byId('gains').append(plot({title: 'Amplification of the colors', low: 0, high: data.run.mostColorGain,
  series: [{name: 'red', color: '#d04545', values: data.run.red}, {name: 'green', color: '#3a9d5d', values: data.run.green},
    {name: 'blue', color: '#3f7fd0', values: data.run.blue}]}));
byId('times').append(table(data.times.heads, data.times.rows));
byId('otherTitle').textContent = 'The same lights, metered by ' + data.other.metering;
byId('otherLaw').textContent = data.other.law;
exposure(byId('other'), data.other);
