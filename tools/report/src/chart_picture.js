// A chart as a picture of its own: what the page writes above it stands in the picture too.
import {themed} from './theme.js';

const kHead = 44;
const kFont = 'ui-sans-serif, system-ui, sans-serif';

export function chartPicture(plot, {title, unit, series}) {
  const {canvas} = plot.ctx, sharp = devicePixelRatio;
  const picture = Object.assign(document.createElement('canvas'), {width: canvas.width, height: canvas.height + kHead * sharp});
  const context = picture.getContext('2d');
  context.fillStyle = themed('--surface');
  context.fillRect(0, 0, picture.width, picture.height);
  context.drawImage(canvas, 0, kHead * sharp);
  context.scale(sharp, sharp);
  const write = (text, x, y, colour, weight = 400) => {
    context.font = `${weight} 13px ${kFont}`;
    context.fillStyle = themed(colour);
    context.fillText(text, x, y);
    return x + context.measureText(text).width;
  };
  const end = write(title, 10, 18, '--text', 620);
  if (unit) write(unit, end + 8, 18, '--muted');
  series.filter(one => !one.hidden).reduce((x, {label, colour}) => {
    context.fillStyle = themed(colour);
    context.fillRect(x, 33, 12, 3);
    return write(label, x + 17, 39, '--muted') + 16;
  }, 10);
  return picture;
}
