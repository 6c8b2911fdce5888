// Reads the data, and brings each geography's stage to life: the first at once, the others when there is time.
import {readReport} from "./data.js";
import {createStage} from "./stage.js";

const report = readReport(document.getElementById("report-data").textContent);
const places = [...document.querySelectorAll(".stage")];
const build = (place) => {
    if (!place.classList.contains("live")) createStage(report.geographies[Number(place.dataset.geography)], place);
};
const buildAll = () => places.forEach(build);
build(places[0]);
places.slice(1).forEach((place, i) => setTimeout(() => build(place), 60 * (i + 1)));
addEventListener("beforeprint", buildAll);
