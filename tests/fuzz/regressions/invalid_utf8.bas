DIM r = "ÿþÃ"
