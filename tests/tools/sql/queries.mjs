// Runs each query of standard input, a JSON list, on DuckDB; prints the lists of their rows as JSON.
import {text} from 'node:stream/consumers';
import {DuckDBInstance} from '@duckdb/node-api';

const connection = await (await DuckDBInstance.create(':memory:')).connect();
const answers = [];
for (const query of JSON.parse(await text(process.stdin)))
  answers.push((await connection.runAndReadAll(query)).getRowObjectsJson());
console.log(JSON.stringify(answers));
