// Runs in a page that holds catapult's trace viewer and a timeline: shows the timeline. With #check in the address it
// also writes what the viewer made of the timeline into the element 'seen', one line for each thing, sorted.
'use strict';

async function show(text) {
  const view = document.createElement('tr-ui-timeline-view');
  view.track_view_container = document.createElement('track-view-container');
  view.track_view_container.id = 'track_view_container';
  Polymer.dom(view).appendChild(view.track_view_container);
  view.globalMode = true;
  view.viewTitle = 'timeline';
  Polymer.dom(document.body).appendChild(view);
  const model = new tr.Model();
  await new tr.importer.Import(model).importTraces([text]);
  view.model = model;
  return [view, model];
}

const kDetails = ['holder', 'for', 'package', 'identity', 'pid', 'duration', 'ended'];

// The same in every session: without process ids and the numbers of tracks.
function plain(text) {
  return text.replace(/pid \d+/, 'pid N').replace(/ \(\d+\)$/, '');
}

function* linesOf(model) {
  for (const warning of model.importWarnings) yield `the viewer warns: ${warning.message}`;
  const ends = model.instantEvents.map(instant => instant.start);
  for (const instant of model.instantEvents) yield instant.title;
  const isEnd = (life, time) => Math.abs(time - ends[life]) < 0.01;
  const lives = name => model.getAllProcesses().filter(p => p.name === name).sort((a, b) => a.pid - b.pid).entries();
  for (const [life, process] of lives('mirx-simulator')) {
    for (const thread of Object.values(process.threads)) {
      for (const {title, args, end} of thread.sliceGroup.slices) {
        const line = [`life ${life + 1}`, plain(thread.name), plain(title), args.for, args.duration, args.ended];
        if (/never|service/.test(args.ended) && !isEnd(life, end)) line.push('ends before the file');
        for (const detail of kDetails) if (args[detail] === undefined) line.push(`has no ${detail}`);
        yield line.join(' | ');
      }
    }
  }
  for (const [life, process] of lives('mirx-simulator values')) {
    for (const counter of Object.values(process.counters)) {
      const samples = counter.series[0].samples;
      const values = [...new Set(samples.map(sample => sample.value))].sort((a, b) => a - b);
      const line = [`life ${life + 1} values`, counter.name, values.join(' ')];
      if (!isEnd(life, samples[samples.length - 1].timestamp)) line.push('ends before the file');
      yield line.join(' | ');
    }
  }
}

window.addEventListener('WebComponentsReady', async () => {
  const [view, model] = await show(document.getElementById('timeline').textContent);
  if (location.hash !== '#check') return;
  const seen = document.createElement('pre');
  seen.id = 'seen';
  seen.hidden = true;
  seen.textContent = '\n' + [...linesOf(model)].sort().join('\n') + '\n';
  document.body.appendChild(seen);
  view.$.analysis.style.height = '380px';
  // The picture shows what a click on a forgotten hold shows.
  const isForgotten = event => /^never released: .*CAMERA/.test(event.title);
  view.brushingStateController.changeSelectionFromTimeline(
      new tr.model.EventSet([...model.getDescendantEvents()].filter(isForgotten)[0]));
});
